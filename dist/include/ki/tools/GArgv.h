#pragma once
// The command line as a map of keyed options: "--key value", "-flag", "--title \"two words\"".

#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>

namespace ki {

class GArgv {
public:
    GArgv() = default;
    explicit GArgv(const QString& source) : source_(source) {}

    /// Joins the arguments after the program name into the source, quoting those that contain
    /// white space so that splitting gives the same pieces back. Double quotes inside an
    /// argument cannot be expressed on this command line and are dropped.
    void set_arguments(int argc, char** argv);
    void set_source(const QString& source) { source_ = source; }
    const QString& source() const { return source_; }

    void set_must_have_keys(const QStringList& keys) { must_have_keys = keys; }
    void set_optional_keys(const QStringList& keys) { optional_keys = keys; }

    /// Fills the options from the source; on any failure logs the reason, returns false and
    /// leaves the options of an earlier successful parse untouched.
    bool parse();
    /// The first must-have key that the last `parse` did not find; empty when none was missing.
    QString getFirstMissingKey() const { return first_missing_key; }

    bool has_key(const QString& key) const { return options.contains(key); }
    /// The option's value: its text, `true` for a flag, an invalid QVariant when absent.
    QVariant value(const QString& key) const { return options.value(key); }
    QString value_string(const QString& key, const QString& fallback = {}) const;
    const QMap<QString, QVariant>& get_options() const { return options; }
    qsizetype size() const { return options.size(); }

    /// "--must1 arg --must2 arg", then the optional keys when `with_optional`.
    QString build_cmd_line_example(bool with_optional) const;
    /// Logs an example command line for `program_name`, and the missing key if there is one.
    void show_example(const QString& program_name) const;
    /// Logs "GArgv, arguments:<n>" and one "key='value'" line per option.
    void show(unsigned int indent) const;

private:
    QString source_;
    QMap<QString, QVariant> options;
    QStringList must_have_keys;
    QStringList optional_keys;
    QString first_missing_key;
};

}  // namespace ki
