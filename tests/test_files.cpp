// Saving files: a failed save (full disk, failing last flush, refused target) leaves what was
// there before and no temporary file; devices and FIFOs are written in place, never replaced.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include "LoggedTest.h"
#include "app/files/SafeSave.h"

using morvel::SafeSave;

namespace {

mode_t type_of(const QString& path) {
    struct stat st {};
    return ::lstat(QFile::encodeName(path).constData(), &st) == 0 ? (st.st_mode & S_IFMT) : 0;
}

/// A character device like /dev/full (minor 7) or /dev/null (minor 3): a private copy when the
/// test may make one, so that a fault in the code under test cannot replace the system's own.
QString device(const QTemporaryDir& dir, const char* name, unsigned minor) {
    const QString copy = dir.filePath(QString::fromLatin1(name));
    if (::geteuid() == 0 &&
        ::mknod(QFile::encodeName(copy).constData(), S_IFCHR | 0666, makedev(1, minor)) == 0)
        return copy;
    return QStringLiteral("/dev/") + QLatin1String(name);
}

}  // namespace

TEST(SafeSave, FailuresKeepTheOldFileAndDevicesStayDevices) {
    const QByteArray old("old content\n");
    // Larger than one buffered chunk, so that a write fails before the final flush.
    const QByteArray big = QByteArray("0123456789abcdef").repeated(10'000);
    const QByteArray small("new content, all of it buffered until the end\n");
    using F = SafeSave::Failure;
    struct Row {
        const char* name;
        const char* target;  ///< a name in the test's folder; "sheet.pdf" holds the old content, "pipe" is a
                             ///< FIFO, "full" and "null" are devices, "." is the folder itself
        QByteArray content;
        qint64 space;  ///< bytes the disk holds, -1 unlimited
        F failure;
        QByteArray after;  ///< the target's content afterwards; ignored for devices
        mode_t type;       ///< the target's file type afterwards
    };
    const auto make = [&](const QTemporaryDir& dir, const QString& name) {
        const QString path = dir.filePath(name);
        if (name == "sheet.pdf") write_file(path, old);
        if (name == "pipe") ::mkfifo(QFile::encodeName(path).constData(), 0600);
        if (name == "full") return device(dir, "full", 7);
        if (name == "null") return device(dir, "null", 3);
        return name == "." ? dir.path() : path;
    };
    const Row rows[] = {
        {"a new file is written", "new.pdf", big, -1, F::NONE, big, S_IFREG},
        {"an old file is replaced", "sheet.pdf", big, -1, F::NONE, big, S_IFREG},
        {"a full disk in the middle keeps the old file", "sheet.pdf", big, 70'000, F::DISK_FULL, old,
         S_IFREG},
        {"a full disk at the last flush keeps the old file", "sheet.pdf", small, small.size() - 1,
         F::DISK_FULL, old, S_IFREG},
        {"a full disk before anything is written keeps the old file", "sheet.pdf", small, 0, F::DISK_FULL,
         old, S_IFREG},
        {"a folder is refused", ".", small, -1, F::IS_FOLDER, {}, S_IFDIR},
        {"a missing folder is named as such", "no/such.pdf", small, -1, F::NO_FOLDER, {}, 0},
        {"a FIFO without a reader is refused and stays", "pipe", small, -1, F::NO_READER, {}, S_IFIFO},
        {"a full device is written in place and stays", "full", small, -1, F::DISK_FULL, {}, S_IFCHR},
        {"the null device is written in place and stays", "null", big, -1, F::NONE, {}, S_IFCHR},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        QTemporaryDir dir;
        const QString target = make(dir, QString::fromLatin1(row.target));
        const QStringList before =
            QDir(dir.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
        SafeSave save(target);
        save.set_space_left(row.space);
        bool ok = save.open();
        for (qsizetype at = 0; ok && at < row.content.size(); at += 4096)
            save.device().write(row.content.mid(at, 4096));
        ok = ok && save.commit();
        EXPECT_EQ(ok, row.failure == F::NONE);
        EXPECT_EQ(save.failure(), row.failure);
        EXPECT_EQ(save.reason().isEmpty(), row.failure == F::NONE) << save.reason().toStdString();
        EXPECT_EQ(type_of(target), row.type);
        if (row.type == S_IFREG) {
            EXPECT_EQ(read_file(target), row.after);
        }
        QStringList expected = before;
        if (row.type == S_IFREG && !expected.contains(QFileInfo(target).fileName()))
            expected << QFileInfo(target).fileName();
        EXPECT_EQ(QDir(dir.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                  expected)
            << "no temporary file is left";
    }
}

TEST(SafeSave, WritesThroughLinksAndFifosWithoutReplacingThem) {
    QTemporaryDir dir;
    const QString real = dir.filePath("real.csv");
    const QString link = dir.filePath("link.csv");
    QFile(real).open(QIODevice::WriteOnly);
    QFile::setPermissions(real, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup);
    ASSERT_TRUE(QFile::link(real, link));
    const QString pipe = dir.filePath("pipe");
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    const auto save = [](const QString& target, const QByteArray& content) {
        SafeSave file(target);
        if (!file.open()) return false;
        file.device().write(content);
        return file.commit();
    };
    // The reading end opened first, without waiting: the writer then finds its reader.
    const int reader = ::open(QFile::encodeName(pipe).constData(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    EXPECT_TRUE(save(pipe, "through the pipe"));
    char buffer[64] = {};
    const ssize_t got = ::read(reader, buffer, sizeof buffer);
    ::close(reader);
    EXPECT_EQ(QByteArray(buffer, got > 0 ? int(got) : 0), "through the pipe");
    EXPECT_EQ(type_of(pipe), mode_t(S_IFIFO));

    ASSERT_TRUE(save(link, "via the link"));
    EXPECT_EQ(type_of(link), mode_t(S_IFLNK)) << "the link stays a link";
    EXPECT_EQ(read_file(real), "via the link");
    struct stat st {};
    ASSERT_EQ(::stat(QFile::encodeName(real).constData(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0640u) << "the replaced file keeps its permissions";
}
