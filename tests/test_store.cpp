#include <gtest/gtest.h>
#include <ki/log/GLog.h>
#include <ki/log/LogCapture.h>
#include <ki/log/LogConfig.h>
#include <ki/store/BuiltinTypes.h>
#include <ki/store/GNode.h>
#include <ki/store/Matrix4.h>

#include <QDataStream>
#include <QIODevice>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "LoggedTest.h"

using ki::store::GAttributes;
using ki::store::GNode;
using ki::store::GType;
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

TEST_F(StoreTest, AttributeGetReturnsDefaultAndSaysWhy) {
    using ki::log::LOG_ERROR;
    struct Row {
        const char* name;
        std::optional<QVariant> stored;
        int expected;
        std::string message;  // empty: nothing logged
        ki::log::LOG_LEVEL level;
    };
    const std::vector<Row> rows = {
        {"stored int is returned", QVariant(42), 42, "", LOG_ERROR},
        {"missing key", std::nullopt, 5, "GAttributes::get, 'k' not found", ki::log::LOG_WARN},
        {"unsigned is not an int, though it converts", QVariant(42u), 5,
         "GAttributes::get, incompatible type, key:'k', stored:'uint', requested:'int'", LOG_ERROR},
        {"invalid value", QVariant(), 5, "GAttributes::get, invalid or null value, key:'k'", LOG_ERROR},
        {"null value", QVariant(QMetaType::fromType<int>()), 5,
         "GAttributes::get, invalid or null value, key:'k'", LOG_ERROR},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        capture->clear();
        GAttributes attributes;
        if (row.stored) attributes.set("k", *row.stored);
        EXPECT_EQ(attributes.get<int>("k", 5), row.expected);
        const auto lines = capture->lines();
        ASSERT_EQ(lines.size(), row.message.empty() ? 0u : 1u) << capture->text();
        if (lines.empty()) continue;
        EXPECT_EQ(lines[0].text, row.message);
        EXPECT_EQ(lines[0].level, row.level);
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
    EXPECT_TRUE(capture->contains("GAttributes::get_pod, key:'m', ERR_KIR, err:1")) << capture->text();
    EXPECT_EQ(attributes.get_pod("missing", matrix), matrix);
    EXPECT_TRUE(capture->contains("GAttributes::get_pod, <<<missing>>> not found !"));
    struct Unregistered {
        int a = 1;
    };
    EXPECT_FALSE(attributes.set_pod("u", Unregistered{}));
    EXPECT_TRUE(capture->contains("GAttributes::set_pod, id == 0"));

    const GType stored = attributes.value("m").value<GType>();
    EXPECT_EQ(stored.create().value<Matrix4>(), matrix);
    EXPECT_EQ(stored.to_string().rfind("GType{id:2, size:64}, Matrix4{", 0), 0u) << stored.to_string();
    EXPECT_EQ(GType({99, 0, {}}).to_string(), "GType{id:99, size:0}");
    EXPECT_TRUE(capture->contains("GType::to_string - formatter id:99 not found"));

    // Qt's own QVariant reader must find the type by name, as settings of other tools would.
    EXPECT_EQ(QMetaType::fromName("kir::store::GType"), QMetaType::fromType<GType>());
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out << QVariant::fromValue(GType::from_record(sample_log_config()));
    QDataStream in(bytes);
    QVariant received;
    in >> received;
    EXPECT_EQ(received.value<GType>().to_record<ki::log::LogConfig>().get(), sample_log_config());
}

TEST_F(StoreTest, TreeSurvivesTextForm) {
    const GNode tree = full_tree();
    const auto result = GNode::from_qstring(GNode::to_qstring(tree));
    ASSERT_TRUE(result.ok()) << capture->text();
    EXPECT_EQ(result.get(), tree);
    EXPECT_EQ(result.get().attributes.get_pod("log", ki::log::LogConfig{}), sample_log_config());

    GNode changed = tree;
    changed["DRAW_CONFIG"].set("rCircle", 141);
    EXPECT_NE(changed, tree);
    EXPECT_NE(changed.get_md5(), tree.get_md5());
    EXPECT_EQ(result.get().get_md5(), tree.get_md5());
    changed["DRAW_CONFIG"].set("rCircle", 140u);
    EXPECT_NE(changed, tree) << "140u and 140 are different values to a reader asking for int";
}

TEST_F(StoreTest, FromQStringRefusesBadText) {
    const QString valid = GNode::to_qstring(full_tree());
    constexpr qint32 MAGIC = GNode::MAGIC;
    constexpr qint16 V1 = 1;
    const QString k = QStringLiteral("k");
    QString deep_tree;
    {
        QByteArray bytes;
        QDataStream out(&bytes, QIODevice::WriteOnly);
        out << MAGIC << V1;
        for (int i = 0; i < 100000; ++i) out << qint32(0) << qint32(1) << k;
        deep_tree = QString::fromLatin1(bytes.toBase64());
    }
    const std::string refused = "from_qstring, node deserialization failed";
    struct Row {
        const char* name;
        QString text;
        std::string message;
    };
    const std::vector<Row> rows = {
        {"empty text", "", "from_qstring, empty string"},
        {"not Base64", "GNOD!?", "from_qstring, base64 decode failed"},
        {"characters outside Latin-1", QStringLiteral("R05PR漢"), "from_qstring, base64 decode failed"},
        {"shorter than the magic", stream_text(qint16(0x474E)), "from_qstring, failed to read magic"},
        {"wrong magic", stream_text(qint32(0x584E4F44), V1, 0, 0), "from_qstring, wrong magic:0x584e4f44"},
        {"magic without version", truncated(valid, 5), "from_qstring, failed to read version"},
        {"version 2", stream_text(MAGIC, qint16(2), 0, 0), "from_qstring, unsupported version:2"},
        {"node truncated", truncated(valid, 40), refused},
        {"2^31-1 attributes claimed", stream_text(MAGIC, V1, 0x7fffffff), refused},
        {"2^31-1 children claimed", stream_text(MAGIC, V1, 0, 0x7fffffff), refused},
        {"negative child count", stream_text(MAGIC, V1, 0, -1), refused},
        {"string list claiming 2^32-1 entries",
         stream_text(MAGIC, V1, 1, k, quint32(QMetaType::QStringList), qint8(0), quint32(0xffffffff)),
         refused},
        {"variant list claiming 2^31-1 entries refused",
         stream_text(MAGIC, V1, 1, k, quint32(QMetaType::QVariantList), qint8(0), 0x7fffffff), refused},
        {"unknown user type",
         stream_text(MAGIC, V1, 1, k, quint32(QMetaType::User), qint8(0), QByteArray("X")), refused},
        {"record size disagrees with its bytes",
         stream_text(MAGIC, V1, 1, k, quint32(QMetaType::User), qint8(0), QByteArray("kir::store::GType"),
                     quint32(2), quint32(64), QByteArray(8, 'x')),
         refused},
        {"nesting deep enough to overflow the stack", deep_tree, refused},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        capture->clear();
        const auto result = GNode::from_qstring(row.text);
        EXPECT_FALSE(result.ok());
        EXPECT_EQ(result.message, row.message);
        EXPECT_EQ(capture->count(row.message), 1) << capture->text();
        EXPECT_TRUE(GNode::from_base_64_string(row.text).is_empty());
    }
}

TEST_F(StoreTest, RandomAndMutatedTextNeverCrashes) {
    ki::log::remove_log_appender(capture.get());  // 10,000 refusals are not worth keeping
    const QByteArray valid = QByteArray::fromBase64(GNode::to_qstring(full_tree()).toLatin1());
    std::mt19937 random(20240611u);
    auto below = [&random](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    int accepted = 0;
    for (int i = 0; i < 10000; ++i) {
        QByteArray bytes;
        if (i % 2 == 0) {
            bytes.resize(below(80));
            for (char& c : bytes) c = static_cast<char>(below(256));
        } else {
            bytes = valid;
            for (int edits = 1 + below(4); edits > 0; --edits) {
                const int at = below(static_cast<int>(bytes.size()));
                switch (below(3)) {
                    case 0:
                        bytes[at] = static_cast<char>(below(256));
                        break;
                    case 1:
                        bytes.truncate(at);
                        break;
                    default:
                        bytes.insert(at, static_cast<char>(below(256)));
                        break;
                }
                if (bytes.isEmpty()) break;
            }
        }
        // Every tenth text is not even Base64.
        const QString text = i % 10 == 9 ? QString::fromLatin1(bytes) : QString::fromLatin1(bytes.toBase64());
        const auto result = GNode::from_qstring(text);
        if (!result.ok()) continue;
        ++accepted;
        // Compared as text: a mutated double may be NaN, which never equals itself.
        const QString written = GNode::to_qstring(result.get());
        const auto again = GNode::from_qstring(written);
        ASSERT_TRUE(again.ok()) << "an accepted node must write a readable text, input " << i;
        ASSERT_EQ(GNode::to_qstring(again.get()), written) << "input " << i;
    }
    RecordProperty("accepted", accepted);
}
