#include <ki/log/LogConfig.h>
#include <ki/store/BuiltinTypes.h>
#include <ki/store/GType.h>
#include <ki/store/Matrix4.h>

#include <mutex>

namespace ki::store {

static_assert(StorableRecord<ki::log::LogConfig>);

void register_builtin_types() {
    static std::once_flag once;
    std::call_once(once, [] {
        register_gtype_meta_type();
        register_gtype<ki::log::LogConfig>();
        register_gtype<Matrix4>();
    });
}

}  // namespace ki::store
