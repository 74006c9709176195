#include "app/files/SafeSave.h"

#include <fcntl.h>
#include <ki/qt/lang.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QIODevice>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace morvel {

namespace {

using ki::qt::lang::tt;

constexpr qsizetype CHUNK = 1 << 16;

QByteArray native(const QString& path) {
    return QFile::encodeName(path);
}

SafeSave::Failure failure_of(int error, bool fifo) {
    using F = SafeSave::Failure;
    switch (error) {
        case ENOSPC:
        case EDQUOT:
            return F::DISK_FULL;
        case EFBIG:
            return F::TOO_LARGE;
        case ENOENT:
        case ENOTDIR:
            return F::NO_FOLDER;
        case EACCES:
        case EPERM:
            return F::NOT_WRITABLE;
        case EROFS:
            return F::READ_ONLY_DISK;
        case EISDIR:
            return F::IS_FOLDER;
        case ENXIO:
            return fifo ? F::NO_READER : F::OTHER;
        default:
            return F::OTHER;
    }
}

}  // namespace

class SafeSave::Sink : public QIODevice {
public:
    explicit Sink(QString target) : target(std::move(target)) {}
    ~Sink() override { discard(); }

    bool begin() {
        struct stat existing {};
        const QByteArray path = native(target);
        if (::stat(path.constData(), &existing) == 0) {
            if (S_ISDIR(existing.st_mode)) return fail(EISDIR);
            if (S_ISCHR(existing.st_mode) || S_ISFIFO(existing.st_mode)) return begin_in_place(existing);
            if (!S_ISREG(existing.st_mode)) return fail(Failure::NOT_A_FILE);
            if (::access(path.constData(), W_OK) != 0) return fail(errno);
            // A link stays a link: the file it points to gets the new content.
            destination = QFileInfo(target).canonicalFilePath();
            mode = existing.st_mode & 07777;
        } else {
            if (errno != ENOENT) return fail(errno);
            destination = QFileInfo(target).absoluteFilePath();
            const mode_t mask = ::umask(0);
            ::umask(mask);
            mode = 0666 & ~mask;
        }
        const QFileInfo info(destination);
        QByteArray pattern =
            native(info.absolutePath() + QStringLiteral("/.") + info.fileName() + QStringLiteral(".XXXXXX"));
        fd = ::mkostemp(pattern.data(), O_CLOEXEC);
        if (fd < 0) return fail(errno);
        temporary = pattern;
        if (::fchmod(fd, mode) != 0) return fail(errno);
        return QIODevice::open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    }

    bool finish() {
        if (!isOpen() || failure != Failure::NONE) return discard();
        if (!write_buffer()) return discard();
        // Devices and pipes have nothing to sync, and refuse to.
        if (!inPlace && ::fsync(fd) != 0) {
            fail(errno);
            return discard();
        }
        const int closing = fd;
        fd = -1;
        QIODevice::close();
        if (::close(closing) != 0) {
            fail(errno);
            return discard();
        }
        if (inPlace) return true;
        if (::rename(temporary.constData(), native(destination).constData()) != 0) {
            fail(errno);
            return discard();
        }
        temporary.clear();
        sync_folder();
        return true;
    }

    /// Closes and removes the temporary file; always false, for the failure paths.
    bool discard() {
        if (fd >= 0) ::close(fd);
        fd = -1;
        if (!temporary.isEmpty()) ::unlink(temporary.constData());
        temporary.clear();
        buffer.clear();
        if (isOpen()) QIODevice::close();
        return false;
    }

    bool fail(int error) {
        failure = failure_of(error, fifo);
        systemText = QString::fromLocal8Bit(std::strerror(error));
        return false;
    }
    bool fail(Failure kind) {
        failure = kind;
        return false;
    }

    bool isSequential() const override { return true; }

    QString target;
    QString destination;
    QByteArray temporary;
    QByteArray buffer;
    int fd = -1;
    mode_t mode = 0;
    bool inPlace = false;
    bool fifo = false;
    qint64 written = 0;
    qint64 spaceLeft = -1;
    Failure failure = Failure::NONE;
    QString systemText;

protected:
    qint64 readData(char*, qint64) override { return -1; }

    qint64 writeData(const char* data, qint64 size) override {
        if (failure != Failure::NONE || fd < 0) return -1;
        buffer.append(data, size);
        if (buffer.size() >= CHUNK && !write_buffer()) return -1;
        return size;
    }

private:
    bool begin_in_place(const struct stat& existing) {
        inPlace = true;
        fifo = S_ISFIFO(existing.st_mode);
        destination = target;
        // Non-blocking only to open: a FIFO without a reader is refused instead of waiting forever.
        fd = ::open(native(target).constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
        if (fd < 0) return fail(errno);
        ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK);
        return QIODevice::open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    }

    bool write_buffer() {
        qsizetype done = 0;
        while (done < buffer.size()) {
            qsizetype size = buffer.size() - done;
            if (spaceLeft >= 0 && written + size > spaceLeft) size = qMax<qint64>(0, spaceLeft - written);
            const ssize_t n =
                size > 0 ? ::write(fd, buffer.constData() + done, static_cast<size_t>(size)) : 0;
            if (n < 0 && errno == EINTR) continue;
            if (n < 0) return fail(errno);
            if (n == 0) return fail(ENOSPC);
            done += n;
            written += n;
        }
        buffer.clear();
        return true;
    }

    void sync_folder() {
        const int folder =
            ::open(native(QFileInfo(destination).absolutePath()).constData(), O_RDONLY | O_CLOEXEC);
        if (folder < 0) return;
        ::fsync(folder);
        ::close(folder);
    }
};

SafeSave::SafeSave(QString target) : sink(std::make_unique<Sink>(std::move(target))) {}

SafeSave::~SafeSave() = default;

bool SafeSave::open() {
    return sink->begin();
}

QIODevice& SafeSave::device() {
    return *sink;
}

bool SafeSave::commit() {
    return sink->finish();
}

void SafeSave::cancel() {
    sink->discard();
}

bool SafeSave::in_place() const {
    return sink->inPlace;
}

SafeSave::Failure SafeSave::failure() const {
    return sink->failure;
}

QString SafeSave::reason() const {
    return reason_text(sink->failure, sink->systemText);
}

void SafeSave::set_space_left(qint64 bytes) {
    sink->spaceLeft = bytes;
}

QString SafeSave::reason_text(Failure failure, const QString& systemText) {
    switch (failure) {
        case Failure::NONE:
            return {};
        case Failure::DISK_FULL:
            return tt("the disk is full", "der Datenträger ist voll", "диск переполнен");
        case Failure::TOO_LARGE:
            return tt("the file would be larger than this program may write",
                      "die Datei würde größer, als dieses Programm schreiben darf",
                      "файл получился бы больше, чем программе разрешено записать");
        case Failure::NO_FOLDER:
            return tt("the folder does not exist", "der Ordner existiert nicht", "папка не существует");
        case Failure::NOT_WRITABLE:
            return tt("there is no permission to write there", "dort darf nicht geschrieben werden",
                      "нет прав на запись туда");
        case Failure::READ_ONLY_DISK:
            return tt("the disk is read-only", "der Datenträger ist schreibgeschützt",
                      "диск доступен только для чтения");
        case Failure::IS_FOLDER:
            return tt("it is a folder", "es ist ein Ordner", "это папка");
        case Failure::NOT_A_FILE:
            return tt("it is a device or socket, not a file, and is left untouched",
                      "es ist ein Gerät oder Socket, keine Datei, und bleibt unberührt",
                      "это устройство или сокет, а не файл; оно не тронуто");
        case Failure::NO_READER:
            return tt("no program is reading from this pipe", "kein Programm liest aus dieser Pipe",
                      "из этого канала никто не читает");
        case Failure::OTHER:
            break;
    }
    return systemText.isEmpty() ? tt("the system gave no reason", "das System nennt keinen Grund",
                                     "система не назвала причину")
                                : systemText;
}

}  // namespace morvel
