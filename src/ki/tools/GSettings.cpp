#include <ki/GError.h>
#include <ki/log/GLog.h>
#include <ki/store/BuiltinTypes.h>
#include <ki/tools/GSettings.h>
#include <ki/tools/IniFileCheck.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSplitter>
#include <iostream>
#include <memory>

namespace ki::qt {

namespace {

QString splitter_key(const QSplitter* splitter) {
    return QStringLiteral("splitter/") + splitter->objectName();
}

// The one store; a pointer so that tests can open it afresh.
std::unique_ptr<GSettings>& store() {
    static std::unique_ptr<GSettings> settings;
    return settings;
}

QString window_key(const QString& name) {
    return QString::fromLatin1(GSettings::GROUP_WINDOW) + u'/' + name;
}

// Copies of a damaged settings file: "<file>.damaged", then "<file>.damaged.2", ".3", ...
constexpr int MAX_COPIES = 100;

QString copy_name(const QString& fileName, int n) {
    const QString name = fileName + QStringLiteral(".damaged");
    return n == 1 ? name : name + u'.' + QString::number(n);
}

bool taken(const QString& name) {
    const QFileInfo info(name);
    return info.exists() || info.isSymLink();
}

bool holds(const QString& name, const QByteArray& content) {
    if (QFileInfo(name).size() != content.size()) return false;
    QFile file(name);
    return file.open(QIODevice::ReadOnly) && file.readAll() == content;
}

}  // namespace

GSettings::GSettings(QObject* parent) : QSettings(parent) {}

GSettings& GSettings::instance() {
    // Nodes read from the store may carry records; their types must be known first.
    ki::store::register_builtin_types();
#if !defined(Q_OS_DARWIN) && !defined(Q_OS_WIN) && !defined(Q_OS_WASM)
    // Here the native store is an INI file. A probe finds it: constructing QSettings only loads
    // the raw text, values are converted on their first read.
    static const bool fileKept = set_aside_damaged_file(QSettings().fileName());
    (void)fileKept;
#endif
    std::unique_ptr<GSettings>& settings = store();
    if (!settings) settings.reset(new GSettings);
    return *settings;
}

void GSettings::reopen_for_tests() {
    std::unique_ptr<GSettings>& settings = store();
    if (!settings) return;
    settings->sync();
    settings.reset();
}

bool GSettings::set_aside_damaged_file(const QString& fileName) {
    QString reason;
    const GError check = ki::io::IniFileCheck::check_file(fileName);
    if (!check.is_ok()) {
        reason = check.get_message();
    } else if (QFileInfo::exists(fileName)) {
        QSettings probe(fileName, QSettings::IniFormat);
        (void)probe.allKeys();  // converts every value, known to be safe by now
        if (probe.status() == QSettings::FormatError) reason = QStringLiteral("format error");
    }
    if (reason.isEmpty()) return true;

    // QFile::rename never replaces an existing file, so an older copy survives a race too.
    for (int n = 1; n <= MAX_COPIES; ++n) {
        const QString aside = copy_name(fileName, n);
        if (QFile::rename(fileName, aside)) {
            pp_error("GSettings, settings file '$' is damaged ($), moved to '$'; starting on defaults", fileName,
                     reason, aside);
            return false;
        }
        if (!taken(aside)) break;
    }
    const QString elsewhere =
        QDir::tempPath() + QStringLiteral("/settings-") + QString::number(QCoreApplication::applicationPid());
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, elsewhere);
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, elsewhere);
    pp_error(
        "GSettings, settings file '$' is damaged ($) and cannot be moved; this run keeps its settings in '$'",
        fileName, reason, elsewhere);
    return false;
}

QString GSettings::keep_copy_of_file(const QString& fileName) {
    QFile file(fileName);
    if (!file.exists()) return {};
    if (!file.open(QIODevice::ReadOnly)) {
        pp_error("GSettings, cannot read '$' to keep a copy: $", fileName, file.errorString());
        return {};
    }
    const QByteArray content = file.readAll();
    file.close();
    for (int n = 1; n <= MAX_COPIES; ++n) {
        const QString name = copy_name(fileName, n);
        if (taken(name)) {
            if (holds(name, content)) return name;
            continue;
        }
        QFile copy(name);
        // NewOnly: a copy that appeared since the look above is another one's, never touched.
        if (!copy.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
            pp_error("GSettings, cannot keep a copy of '$' in '$': $", fileName, name, copy.errorString());
            return {};
        }
        const bool written = copy.write(content) == content.size() && copy.flush();
        const QString why = copy.errorString();
        copy.close();
        if (written && copy.error() == QFileDevice::NoError) {
            pp_error("GSettings, settings file '$' holds values that cannot be read; a copy is kept in '$'",
                     fileName, name);
            return name;
        }
        copy.remove();  // a cut-off copy would pass for the whole file
        pp_error("GSettings, cannot keep a copy of '$' in '$': $", fileName, name, why);
        return {};
    }
    pp_error("GSettings, no copy of '$' kept: $ older copies are in the way", fileName, MAX_COPIES);
    return {};
}

void GSettings::refused(const QString& key, const char* type) {
    pp_warn("GSettings::get, key:'$' does not hold a $", key, type);
    if (copyKept) return;
    copyKept = !keep_copy_of_file(fileName()).isEmpty();
}

void GSettings::sync() {
    QSettings::sync();
    if (status() == QSettings::AccessError && !writeErrorLogged) {
        writeErrorLogged = true;
        pp_error("GSettings::sync, cannot write '$'; settings changed in this run are not kept", fileName());
    }
}

void GSettings::dump(unsigned int indent) {
    instance().dump_it(indent);
}

QString GSettings::object_key(const QString& key, const QObject* object) {
    if (object == nullptr) return key;
    return key + u'@' + object->objectName();
}

void GSettings::set(const QString& key, const QVariant& value, const QObject* object) {
    setValue(object_key(key, object), value);
}

void GSettings::set(const QString& key, const Qt::GlobalColor& color, const QObject* object) {
    setValue(object_key(key, object), QColor(color));
}

QColor GSettings::get_color(const QString& key, const QColor& default_value, const QObject* object) {
    return get<QColor>(key, default_value, object);
}

void GSettings::save_splitter_state(QSplitter* splitter) {
    KI_CHECK_NULL(splitter, "src/ki/tools/GSettings");
    if (splitter->objectName().isEmpty()) {
        pp_warn("GSettings::save_splitter_state, splitter without object name, not saved");
        return;
    }
    setValue(splitter_key(splitter), splitter->saveState());
}

void GSettings::restore_splitter_state(QSplitter* splitter) {
    KI_CHECK_NULL(splitter, "src/ki/tools/GSettings");
    if (splitter->objectName().isEmpty()) {
        pp_warn("GSettings::restore_splitter_state, splitter without object name, not restored");
        return;
    }
    const QByteArray state = value(splitter_key(splitter)).toByteArray();
    if (!state.isEmpty() && !splitter->restoreState(state)) refused(splitter_key(splitter), "splitter state");
}

void GSettings::set_node(const QString& key, const ki::store::GNode& node) {
    pp("GSettings::set_node, key:'$'", key);
    setValue(key, node.to_base_64_string());
}

ki::store::GNode GSettings::get_node(const QString& key) {
    const QString text = value(key, QString()).toString();
    if (text.isEmpty()) return {};
    ki::GSysResult<ki::store::GNode> node = ki::store::GNode::from_qstring(text);
    if (node.ok()) return node.take();
    refused(key, "node");
    return {};
}

void GSettings::set_window_node(const ki::store::GNode& node, const QString& name) {
    if (name.isEmpty()) {
        pp_error("GSettings::set_window_node, empty window name");
        return;
    }
    set_node(window_key(name), node);
}

ki::store::GNode GSettings::get_window_node(const QString& name) {
    if (name.isEmpty()) {
        pp_error("GSettings::get_window_node, empty window name");
        return {};
    }
    return get_node(window_key(name));
}

void GSettings::clear_config() {
    pp("GSettings::clear_config");
    clear();
    sync();
    pp("GSettings::~clear_config");
}

bool GSettings::check_update_config(unsigned int expected_version, bool clear) {
    version = get_config_version();
    if (version >= expected_version) return false;
    std::cout << "GSettings::check_update_config, current version:" << version
              << ", version expected:" << expected_version << std::endl;
    if (clear) {
        pp("GSettings::check_update_config - CLEAR");
        clear_config();
    }
    set_config_version(expected_version);
    return true;
}

void GSettings::dump_it(unsigned int indent) {
    const std::string dashes(33, '-');
    const QStringList keys = allKeys();
    pp(str::xprintF(indent, "$", dashes));
    pp(str::xprintF(indent, "GSettings"));
    pp(str::xprintF(indent, "allKeys:$", static_cast<long long>(keys.size())));
    for (const QString& key : keys) {
        pp(str::xprintF(indent, "[$]='$'", key, ki::store::GAttributes::value_to_string(value(key))));
    }
    pp(str::xprintF(indent, "config"));
    pp(str::xprintF(indent + 3, "version:$", get_config_version()));
    for (const char* group : {GROUP_WINDOW, "GApplication"}) {
        pp(str::xprintF(indent, "$", group));
        beginGroup(QString::fromLatin1(group));
        const QStringList names = childKeys();
        endGroup();
        for (const QString& name : names) {
            const QString full_key = QString::fromLatin1(group) + u'/' + name;
            pp(str::xprintF(indent + 3, "$, base64 length:$", name,
                            static_cast<long long>(value(full_key).toString().size())));
        }
    }
    pp(str::xprintF(indent, "$", dashes));
}

}  // namespace ki::qt
