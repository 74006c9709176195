#pragma once
// Saves a file so that a failure never costs the one already there: the new content goes into a
// temporary file beside the target, every write and the final flush are checked, the file is
// synced and only then renamed over the target. A target that exists and is not a regular file
// (a terminal, /dev/null, a FIFO) is written in place and never replaced; a block device or a
// socket is refused.

#include <QString>
#include <memory>

class QIODevice;

namespace morvel {

class SafeSave {
public:
    enum class Failure {
        NONE,
        DISK_FULL,       ///< no space left (or over the quota)
        TOO_LARGE,       ///< the file would grow past the size this process may write
        NO_FOLDER,       ///< the folder of the target does not exist
        NOT_WRITABLE,    ///< no permission to write the target or its folder
        READ_ONLY_DISK,  ///< the file system is mounted read-only
        IS_FOLDER,
        NOT_A_FILE,  ///< a block device or a socket: never written
        NO_READER,   ///< a FIFO that no program reads from
        OTHER,
    };

    explicit SafeSave(QString target);
    /// An open file that was not committed is discarded.
    ~SafeSave();
    SafeSave(const SafeSave&) = delete;
    SafeSave& operator=(const SafeSave&) = delete;

    /// False, with `failure()` set, when the file cannot be begun.
    bool open();
    /// Where to write. Writes are buffered; the first that fails makes every later one fail.
    QIODevice& device();
    /// Writes what is buffered, syncs it and puts the file in place. On any failure, earlier
    /// writes included, the temporary file is removed and the target is left as it was.
    bool commit();
    /// Drops what was written.
    void cancel();

    /// True when the target is not a regular file and is written in place.
    bool in_place() const;
    Failure failure() const;
    /// Why saving failed, as a clause in the interface language ("the disk is full"); empty when
    /// nothing failed.
    QString reason() const;
    static QString reason_text(Failure failure, const QString& systemText);

    /// Plays a disk that holds only `bytes` more: tests use it to make a write fail. Writes past
    /// it fail as on a full disk, whether they happen while writing or in the final flush.
    void set_space_left(qint64 bytes);

private:
    class Sink;
    std::unique_ptr<Sink> sink;
};

}  // namespace morvel
