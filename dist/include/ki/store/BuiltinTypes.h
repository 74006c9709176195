#pragma once
// Registration of the framework's own record types with the store.

namespace ki::store {

/// Registers the GType meta-type and the records LogConfig and Matrix4 (create and format
/// registries). Safe to call more than once and from several places.
void register_builtin_types();

}  // namespace ki::store
