#pragma once
// Gives a Qt object a readable name by default, so logs and style sheets can address it.

#include <ki/GError.h>

#include <QObject>
#include <QString>

namespace ki::qt {

/// Mixed into framework widgets beside their Qt base `T`. Until a name is set, the Qt object
/// name is "<type>#<n>" with a number counted per process, so two widgets never share one.
template <typename T>
class ObjectName {
public:
    virtual ~ObjectName() = default;

    /// The Qt object name.
    QString get_name() const { return self->objectName(); }
    void set_name(const QString& name) { self->setObjectName(name); }

protected:
    ObjectName(T* obj, const char* type_name) : self(obj) {
        KI_CHECK_NULL(obj, "dist/include/ki/qt/ext/ObjectName");
        static int counter = 0;
        self->setObjectName(QString::fromLatin1(type_name) + QLatin1Char('#') + QString::number(counter++));
    }

private:
    T* self;
};

}  // namespace ki::qt
