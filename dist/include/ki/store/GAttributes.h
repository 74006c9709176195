#pragma once
// The typed values of one settings node: a map from key to QVariant, ordered by key.

#include <ki/log/GLog.h>
#include <ki/store/GType.h>

#include <QDataStream>
#include <QString>
#include <QVariant>
#include <map>

namespace ki::store {

class GAttributes {
public:
    /// The stored value, or `default_value` with a logged reason when the key is missing, the
    /// value is invalid or null, or its type is not exactly T (an int is not an unsigned).
    template <typename T>
    T get(const QString& key, const T& default_value) const {
        const QVariant* value = lookup(key, QMetaType::fromType<T>());
        return value == nullptr ? default_value : value->value<T>();
    }
    QString get_string(const QString& key, const QString& default_value = {}) const {
        return get<QString>(key, default_value);
    }

    /// A record stored with set_pod; the default when it is missing or does not fit T.
    template <StorableRecord T>
    T get_pod(const QString& key, const T& default_value) const {
        auto it = values.find(key);
        if (it == values.end()) {
            ki::pp_error("GAttributes::get_pod, <<<$>>> not found !", key);
            return default_value;
        }
        if (it->second.metaType() != QMetaType::fromType<GType>()) {
            ki::pp_error("GAttributes::get_pod, key:'$' holds '$', not a record", key, it->second.typeName());
            return default_value;
        }
        GSysResult<T> record = it->second.value<GType>().to_record<T>();
        if (!record.ok()) {
            ki::pp_error("GAttributes::get_pod, key:'$', $", key, record.to_string());
            return default_value;
        }
        return record.take();
    }
    /// Stores a record; refused (and logged) for a type without an id.
    template <StorableRecord T>
    bool set_pod(const QString& key, const T& record) {
        if (GTypeInfo<T>::id == 0) {
            ki::pp_error("GAttributes::set_pod, id == 0");
            return false;
        }
        set(key, GType::from_record(record));
        return true;
    }

    void set(const QString& key, const QVariant& value) { values[key] = value; }
    void set(const QString& key, const GType& value) { values[key] = QVariant::fromValue(value); }

    bool contains(const QString& key) const { return values.contains(key); }
    /// The raw value; an invalid QVariant when the key is missing.
    QVariant value(const QString& key) const;
    bool remove(const QString& key) { return values.erase(key) > 0; }
    void clear() { values.clear(); }
    bool is_empty() const { return values.empty(); }
    std::size_t size() const { return values.size(); }
    const std::map<QString, QVariant>& get_values() const { return values; }

    /// Equal keys with values of the same type that compare equal (1 and 1u differ).
    bool operator==(const GAttributes& other) const;

    /// int32 count, then key and value of each entry in key order. A value of a type that
    /// could not be read back safely (images, brushes, fonts, ...) is skipped with an error.
    bool to_stream(QDataStream& out) const;
    /// Reads into a temporary and replaces the content only on success.
    bool from_stream(QDataStream& in);

    /// Logs one line per entry.
    void show(unsigned int indent) const;
    /// The value as people read it: text for simple types, the record's text for a GType.
    static QString value_to_string(const QVariant& value);

private:
    /// The value under key when it is valid and of the wanted type; nullptr after logging why not.
    const QVariant* lookup(const QString& key, QMetaType wanted) const;

    std::map<QString, QVariant> values;
};

}  // namespace ki::store
