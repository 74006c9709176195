#include <gtest/gtest.h>
#include <ki/log/LogConfig.h>
#include <ki/store/BuiltinTypes.h>
#include <ki/store/GNode.h>
#include <ki/store/Matrix4.h>

#include <QBrush>
#include <QDataStream>
#include <QFont>
#include <QIODevice>
#include <QImage>
#include <optional>
#include <string>

#include "LoggedTest.h"

using ki::store::GAttributes;
using ki::store::GNode;
using ki::store::Matrix4;

namespace {

class StoreTest : public LoggedTest {
protected:
    void SetUp() override {
        ki::store::register_builtin_types();
        LoggedTest::SetUp();
    }
};

ki::log::LogConfig sample_log_config() {
    ki::log::LogConfig config;
    config.logLevel = 1;
    config.logControl = 0x3DE;
    config.autoScrollHorz = true;
    return config;
}

// One value of every kind a node stores, nested two levels deep.
GNode full_tree() {
    GNode node;
    node.set("int", -42);
    node.set("unsigned", 4000000000u);
    node.set("bool", true);
    node.set("text", QStringLiteral("漢字 stroke"));
    node.set("bytes", QByteArray("\0\x01\xff geometry", 12));
    node.attributes.set_pod("log", sample_log_config());
    Matrix4 matrix;
    matrix.value[3][0] = 12.5f;
    node.attributes.set_pod("matrix", matrix);
    node["DRAW_CONFIG"].set("rCircle", 140);
    node["DRAW_CONFIG"]["deeper"].set("flag", false);
    node.ensure_node("empty child");
    return node;
}

// Base64 of whatever the arguments write to a data stream: hand-made node texts.
template <typename... Args>
QString stream_text(const Args&... args) {
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setVersion(QDataStream::Qt_6_0);
    (out << ... << args);
    return QString::fromLatin1(bytes.toBase64());
}

QString truncated(const QString& text, int keep_bytes) {
    return QString::fromLatin1(QByteArray::fromBase64(text.toLatin1()).left(keep_bytes).toBase64());
}

}  // namespace

TEST_F(StoreTest, AttributeGetReturnsTheDefaultForWhatIsNoInt) {
    const struct Row {
        const char* name;
        std::optional<QVariant> stored;
        int expected;
    } rows[] = {
        {"stored int is returned", QVariant(42), 42},
        {"missing key", std::nullopt, 5},
        {"unsigned is not an int, though it converts", QVariant(42u), 5},
        {"null value", QVariant(QMetaType::fromType<int>()), 5},
    };
    for (const Row& row : rows) {
        GAttributes attributes;
        if (row.stored) attributes.set("k", *row.stored);
        EXPECT_EQ(attributes.get<int>("k", 5), row.expected) << row.name;
    }
}

TEST_F(StoreTest, RecordAttributes) {
    GAttributes attributes;
    Matrix4 matrix;
    matrix.value[1][2] = -3.0f;
    ASSERT_TRUE(attributes.set_pod("m", matrix));
    EXPECT_EQ(attributes.get_pod("m", Matrix4{}), matrix);
    EXPECT_EQ(attributes.get_pod("m", sample_log_config()), sample_log_config())
        << "a matrix read as a LogConfig";
    EXPECT_EQ(attributes.get_pod("missing", matrix), matrix);
}

// What the windows store survives the text form; types that Qt reads with containers it sizes by
// the stream's word are left out, the values beside them kept.
TEST_F(StoreTest, StoredValuesSurviveTextForm) {
    // One value "v" next to a plain "w".
    const auto one = [](const QVariant& value) {
        GNode node;
        node.set("v", value);
        node.set("w", 7);
        return node;
    };
    const struct Row {
        const char* name;
        GNode node;
        bool stored;  // false: "v" is left out, "w" stays
    } rows[] = {
        {"every kind a window stores, nested two levels deep", full_tree(), true},
        {"image", one(QImage(4, 4, QImage::Format_ARGB32)), false},
        {"brush", one(QBrush(Qt::red)), false},
        {"font", one(QFont("Monospace", 13)), false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto read = GNode::from_qstring(GNode::to_qstring(row.node));
        ASSERT_TRUE(read.ok()) << read.message;
        if (row.stored) {
            EXPECT_EQ(read.get(), row.node);  // values compare with their types
        } else {
            EXPECT_FALSE(read.get().attributes.contains("v"));
            EXPECT_EQ(read.get().get<int>("w", 0), 7) << "the other values stay";
        }
    }
}

// A node read from any text writes one text, and reading that back writes it again unchanged:
// date-times in states Qt reads but would not write (a damaged or hostile file) changed the
// stored text with every save.
TEST_F(StoreTest, ANodeReadWritesTheSameTextEveryTime) {
    constexpr qint32 MAGIC = GNode::MAGIC;
    constexpr qint16 V1 = 1;
    // A node with one date-time "t" on 4713 BC, 24 November (Julian day 0), midnight.
    const auto date_time = [&](const auto&... zone) {
        return stream_text(MAGIC, V1, 1, QStringLiteral("t"), quint32(QMetaType::QDateTime), qint8(0), qint64(0),
                           quint32(0), zone..., 0);
    };
    const struct Row {
        const char* name;
        QString text;
    } rows[] = {
        {"a kind of time Qt does not know", date_time(qint8(10))},
        {"an offset of zero from UTC", date_time(qint8(Qt::OffsetFromUTC), qint32(0))},
        {"an offset of an hour", date_time(qint8(Qt::OffsetFromUTC), qint32(3600))},
        {"a time zone Qt does not know", date_time(qint8(Qt::TimeZone), QByteArray("Nowhere/Zone"))},
        {"UTC", date_time(qint8(Qt::UTC))},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto read = GNode::from_qstring(row.text);
        ASSERT_TRUE(read.ok()) << read.message;
        const QString written = GNode::to_qstring(read.get());
        const auto again = GNode::from_qstring(written);
        ASSERT_TRUE(again.ok()) << again.message;
        EXPECT_EQ(GNode::to_qstring(again.get()), written);
        EXPECT_TRUE(again.get().attributes.contains("t"));
    }
}

TEST_F(StoreTest, FromQStringRefusesBadText) {
    const QString valid = GNode::to_qstring(full_tree());
    constexpr qint32 MAGIC = GNode::MAGIC;
    constexpr qint16 V1 = 1;
    const QString k = QStringLiteral("k");
    // 100,000 levels of children, or of lists in lists.
    auto deep = [&](bool lists) {
        QByteArray bytes;
        QDataStream out(&bytes, QIODevice::WriteOnly);
        out << MAGIC << V1;
        if (lists) out << qint32(1) << k;
        for (int i = 0; i < 100000; ++i) {
            if (lists) out << quint32(QMetaType::QVariantList) << qint8(0) << quint32(1);
            else out << qint32(0) << qint32(1) << k;
        }
        return QString::fromLatin1(bytes.toBase64());
    };
    // A node holding one value "k" of `type`, its bytes after the type written by `args`.
    const auto one_value = [&](QMetaType::Type type, const auto&... args) {
        return stream_text(MAGIC, V1, 1, k, quint32(type), qint8(0), args...);
    };
    const std::string refused = "from_qstring, node deserialization failed";
    const struct Row {
        const char* name;
        QString text;
        std::string message;
    } rows[] = {
        {"empty text", "", "from_qstring, empty string"},
        {"not Base64", "GNOD!?", "from_qstring, base64 decode failed"},
        {"characters outside Latin-1", QStringLiteral("R05PR漢"), "from_qstring, base64 decode failed"},
        {"shorter than the magic", stream_text(qint16(0x474E)), "from_qstring, failed to read magic"},
        {"wrong magic", stream_text(qint32(0x584E4F44), V1, 0, 0), "from_qstring, wrong magic:1481527108"},
        {"magic without version", truncated(valid, 5), "from_qstring, failed to read version"},
        {"version 2", stream_text(MAGIC, qint16(2), 0, 0), "from_qstring, unsupported version:2"},
        {"node truncated", truncated(valid, 40), refused},
        {"2^31-1 attributes claimed", stream_text(MAGIC, V1, 0x7fffffff), refused},
        {"2^31-1 children claimed", stream_text(MAGIC, V1, 0, 0x7fffffff), refused},
        {"negative child count", stream_text(MAGIC, V1, 0, -1), refused},
        {"string list of 2^32-1 entries", one_value(QMetaType::QStringList, quint32(0xffffffff)), refused},
        {"variant list claiming 2^31-1 entries", one_value(QMetaType::QVariantList, 0x7fffffff), refused},
        {"unknown user type", one_value(QMetaType::User, QByteArray("X")), refused},
        {"record size disagrees with its bytes",
         one_value(QMetaType::User, QByteArray("kir::store::GType"), quint32(2), quint32(64),
                   QByteArray(8, 'x')),
         refused},
        {"nesting deep enough to overflow the stack", deep(false), refused},
        {"lists nested deep enough to overflow the stack", deep(true), refused},
        {"hash claiming 2^32-1 entries", one_value(QMetaType::QVariantHash, quint32(0xffffffff)), refused},
        {"bit array claiming 2^64-1 bits", one_value(QMetaType::QBitArray, quint64(-1)), refused},
        {"polygon, read by Qt into a list of the claimed size",
         one_value(QMetaType::QPolygon, quint32(0xffffffff)), refused},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto result = GNode::from_qstring(row.text);
        EXPECT_FALSE(result.ok());
        EXPECT_EQ(result.message, row.message);
    }
}
