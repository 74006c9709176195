#include <ki/tools/os.h>

#include <QCoreApplication>
#include <QFileInfo>
#include <QSysInfo>
#include <QtGlobal>

namespace ki::os {

bool is_sandboxed() {
    if (is_wasm() || is_small_device()) return true;
    return qEnvironmentVariableIsSet("FLATPAK_ID") || qEnvironmentVariableIsSet("SNAP");
}

QString get_program_name_qs() {
    const QString name = QCoreApplication::applicationName();
    if (!name.isEmpty()) return name;
    const QString path = QCoreApplication::instance() ? QCoreApplication::applicationFilePath() : QString();
    return path.isEmpty() ? QStringLiteral("quenlo") : QFileInfo(path).completeBaseName();
}

QString get_os_description() {
    return QSysInfo::prettyProductName() + " (" + QSysInfo::currentCpuArchitecture() + ")";
}

QString get_android_version() { return is_android() ? QSysInfo::productVersion() : QString(); }

}  // namespace ki::os
