#pragma once
// The program's one persistent key-value store, over QSettings in the platform's native format.
// The organisation and application names set before the first `instance()` call decide where
// the values live.

#include <ki/store/GNode.h>

#include <QColor>
#include <QObject>
#include <QPoint>
#include <QRect>
#include <QSettings>
#include <QSize>
#include <QString>
#include <QVariant>

class QSplitter;

namespace ki::qt {

class GSettings : public QSettings {
public:
    /// Created on first use, destroyed at process exit. A damaged settings file is first moved
    /// aside (see set_aside_damaged_file), so that the program starts on its defaults.
    static GSettings& instance();
    /// For tests only: writes the store and drops it, so that the next instance() reads the
    /// file afresh. QSettings keeps its first write error for good, and so would every later
    /// test in the same process.
    static void reopen_for_tests();
    static void init() {}
    /// instance().dump_it(indent).
    static void dump(unsigned int indent = 0);

    /// Set by the program in debug runs: start-up then drops all settings instead of checking
    /// the configuration version.
    static inline bool flagDebug = false;

    /// With `object`, the value is stored under "key@objectName"; otherwise under key.
    void set(const QString& key, const QVariant& value, const QObject* object = nullptr);
    void set(const QString& key, const Qt::GlobalColor& color, const QObject* object = nullptr);

    /// The stored value converted to T; the default when the key is missing or the stored
    /// text does not convert (logged, and the file kept as by keep_copy_of_file).
    template <typename T>
    T get(const QString& key, const T& default_value, const QObject* object = nullptr) {
        const QString full_key = object_key(key, object);
        QVariant stored = value(full_key);
        if (!stored.isValid()) return default_value;
        if (!stored.convert(QMetaType::fromType<T>())) {
            refused(full_key, QMetaType::fromType<T>().name());
            return default_value;
        }
        return stored.value<T>();
    }
    unsigned int get_uint(const QString& key, unsigned int default_value, const QObject* object = nullptr) {
        return get<unsigned int>(key, default_value, object);
    }
    int get_int(const QString& key, int default_value, const QObject* object = nullptr) {
        return get<int>(key, default_value, object);
    }
    float get_float(const QString& key, float default_value, const QObject* object = nullptr) {
        return get<float>(key, default_value, object);
    }
    double get_double(const QString& key, double default_value, const QObject* object = nullptr) {
        return get<double>(key, default_value, object);
    }
    QColor get_color(const QString& key, const QColor& default_value, const QObject* object = nullptr);

    void set_rect(const QString& key, const QRect& rect) { setValue(key, rect); }
    QRect get_rect(const QString& key, const QRect& default_value) { return get<QRect>(key, default_value); }
    void set_point(const QString& key, const QPoint& point) { setValue(key, point); }
    QPoint get_point(const QString& key, const QPoint& default_value) {
        return get<QPoint>(key, default_value);
    }
    void set_size(const QString& key, const QSize& size) { setValue(key, size); }
    QSize get_size(const QString& key, const QSize& default_value) { return get<QSize>(key, default_value); }

    /// Stored under "splitter/<objectName>"; a splitter without an object name is skipped
    /// (logged) because all such splitters would share one key. Null ends the program.
    void save_splitter_state(QSplitter* splitter);
    void restore_splitter_state(QSplitter* splitter);

    /// The node as its Base64 text under key.
    void set_node(const QString& key, const ki::store::GNode& node);
    /// An empty node when the key is missing or its text is refused (logged, and the file kept
    /// as by keep_copy_of_file).
    ki::store::GNode get_node(const QString& key);

    /// Drops every key and writes the empty store out.
    void clear_config();
    /// QSettings::sync, and an error in the log, once, when the store cannot be written (a
    /// read-only file or folder): the program goes on with the values it holds. QSettings writes
    /// through a temporary file, so a failed write never leaves a half-written store behind.
    void sync();

    /// Moves the settings file at `fileName` to "<fileName>.damaged" (logged) when QSettings
    /// could not read it faithfully: a value its decoder would expand without bound (see
    /// ki::io::IniFileCheck), a format error, or a file that cannot be read. Returns whether the
    /// file stays in place. When it cannot be moved, the native settings of this run go to a
    /// temporary folder instead, so that the damaged file is never read. An older copy is never
    /// replaced: the name takes a number (".damaged.2", ".damaged.3", ...) when it is taken.
    static bool set_aside_damaged_file(const QString& fileName);
    /// Copies the file at `fileName` as it is on disk to the first free "<fileName>.damaged"
    /// name, unless one of those copies already holds the same bytes. Called when a stored value
    /// is refused, before the defaults that replace it are written. Returns the copy's name, or
    /// an empty text when there is no file or it cannot be copied (logged).
    static QString keep_copy_of_file(const QString& fileName);
    /// Reads the stored configuration version; when it is older than `expected_version`,
    /// optionally drops all settings, stores the expected version and returns true.
    bool check_update_config(unsigned int expected_version, bool clear);
    unsigned int get_version() const { return version; }
    unsigned int get_version_minimum() const { return version_minimum; }
    /// Informative only: the oldest configuration version this build still reads.
    void set_version_minimum(unsigned int minimum) { version_minimum = minimum; }

    void set_theme(unsigned int theme) { setValue(KEY_THEME, theme); }
    unsigned int get_theme() { return get_uint(KEY_THEME, 0); }
    void set_config_version(unsigned int config_version) { setValue(KEY_CONFIG_VERSION, config_version); }
    unsigned int get_config_version() { return get_uint(KEY_CONFIG_VERSION, 0); }
    void set_log_level(unsigned int level) { setValue(KEY_LOG_LEVEL, level); }
    unsigned int get_log_level() { return get_uint(KEY_LOG_LEVEL, 3); }

    void set_app_node(const ki::store::GNode& node) { set_node(KEY_APP_NODE, node); }
    ki::store::GNode get_app_node() { return get_node(KEY_APP_NODE); }
    /// Stored under "Window/<name>"; an empty name is refused (logged).
    void set_window_node(const ki::store::GNode& node, const QString& name);
    ki::store::GNode get_window_node(const QString& name);

    /// Writes every key and value and the config, Window and GApplication sections to the log.
    void dump_it(unsigned int indent = 0);

    static constexpr const char* KEY_THEME = "ui/theme";
    static constexpr const char* KEY_CONFIG_VERSION = "config/version";
    static constexpr const char* KEY_LOG_LEVEL = "log/level";
    static constexpr const char* KEY_APP_NODE = "GApplication/app";
    static constexpr const char* GROUP_WINDOW = "Window";

    /// "key@objectName" for an object, otherwise key.
    static QString object_key(const QString& key, const QObject* object);

private:
    explicit GSettings(QObject* parent = nullptr);
    /// A stored value that cannot be read as `type`: logged, and the file kept before the
    /// default that stands in for it is saved over it.
    void refused(const QString& key, const char* type);

    unsigned int version = 0;
    unsigned int version_minimum = 0;
    bool writeErrorLogged = false;
    bool copyKept = false;
};

}  // namespace ki::qt
