#pragma once
// A fixture for tests that check what was logged: a freshly configured log whose lines go
// into `capture` instead of the console.

#include <gtest/gtest.h>
#include <ki/log/GLog.h>
#include <ki/log/LogCapture.h>
#include <ki/tools/GSettings.h>

#include <QColor>
#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QThread>
#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

class LoggedTest : public testing::Test {
protected:
    void SetUp() override {
        ki::log::reset_for_tests();
        configure_quietly();
        capture = std::make_unique<ki::log::LogCapture>();
    }
    void TearDown() override {
        capture.reset();
        ki::log::reset_for_tests();
    }

    static void configure_quietly() {
        ki::log::configure();
        ki::log::remove_log_appender(ki::log::get_console_appender());
    }

    std::unique_ptr<ki::log::LogCapture> capture;
};

// Every case starts from an empty settings store and gives back what start-up had stored:
// other tests of the same process rely on it. tests/main.cpp has already moved the store into
// a temporary folder.
class SettingsTest : public LoggedTest {
protected:
    void SetUp() override {
        LoggedTest::SetUp();
        ki::qt::GSettings& settings = ki::qt::GSettings::instance();
        // clear_config below would wipe whatever store this is: never let it be a real one.
        ASSERT_FALSE(settings.fileName().startsWith(QDir::homePath())) << settings.fileName().toStdString();
        for (const QString& key : settings.allKeys()) saved.emplace_back(key, settings.value(key));
        isolated = true;
        settings.clear_config();
    }
    void TearDown() override {
        if (isolated) {
            ki::qt::GSettings& settings = ki::qt::GSettings::instance();
            settings.clear_config();
            for (const auto& [key, value] : saved) settings.setValue(key, value);
            settings.sync();
        }
        LoggedTest::TearDown();
    }

    std::vector<std::pair<QString, QVariant>> saved;
    bool isolated = false;
};

inline void write_file(const QString& path, const QByteArray& content) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << path.toStdString();
    ASSERT_EQ(file.write(content), content.size());
}

inline QByteArray read_file(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Runs `work` on a thread with a stack of `bytes`: a parser that recursed once per nesting level
// would overflow it at a depth a hostile file reaches easily.
inline void on_small_stack(unsigned bytes, const std::function<void()>& work) {
    const std::unique_ptr<QThread> thread(QThread::create(work));
    thread->setStackSize(bytes);
    thread->start();
    thread->wait();
}

// WCAG contrast ratio of two colours (1 to 21).
inline double contrast_ratio(const QColor& a, const QColor& b) {
    const auto luminance = [](const QColor& c) {
        const auto linear = [](double v) { return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4); };
        return 0.2126 * linear(c.redF()) + 0.7152 * linear(c.greenF()) + 0.0722 * linear(c.blueF()) + 0.05;
    };
    return std::max(luminance(a), luminance(b)) / std::min(luminance(a), luminance(b));
}

/// A connection of its own to an SQLite file, as another program would have.
class SqlitePeer {
public:
    explicit SqlitePeer(const QString& file) {
        db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        db.setDatabaseName(file);
        db.open();
    }
    ~SqlitePeer() {
        db.close();
        db = QSqlDatabase();
        QSqlDatabase::removeDatabase(name);
    }
    /// The first column of the first row, -1 when the query fails or returns nothing.
    qint64 value(const QString& sql) {
        QSqlQuery query(db);
        return query.exec(sql) && query.next() ? query.value(0).toLongLong() : -1;
    }
    bool exec(const QString& sql) { return QSqlQuery(db).exec(sql); }
    QSqlDatabase& database() { return db; }

private:
    static inline int count = 0;
    QString name = QStringLiteral("peer-%1").arg(count++);
    QSqlDatabase db;
};
