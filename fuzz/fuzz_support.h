#pragma once
// Shared by the fuzz targets: a silent log, the input as text, a scratch folder, and a check
// that ends the run with a message libFuzzer records as a crash.

#include <ki/log/GLog.h>
#include <ki/xml/XNode.h>

#include <QBuffer>
#include <QByteArray>
#include <QDir>
#include <QFileInfo>
#include <QString>
#include <QTemporaryDir>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace fuzz {

/// Every message is still built (so hostile text goes through the formatter too) but reaches
/// no appender: printing tens of thousands of lines a second would be all the fuzzer measured.
inline bool quiet_log() {
    ki::log::configure();
    ki::log::remove_log_appender(ki::log::get_console_appender());
    ki::log::set_log_level(ki::log::LOG_TRACE);
    return true;
}

inline QByteArray bytes(const uint8_t* data, size_t size) {
    return QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
}

/// The input read as an XML document, through the same device path as the program's files.
inline ki::xml::XNodeResult parse_xml(const uint8_t* data, size_t size) {
    QByteArray document = bytes(data, size);
    QBuffer device(&document);
    device.open(QIODevice::ReadOnly);
    return ki::xml::XNode::parse(device);
}

inline QString text(const uint8_t* data, size_t size) {
    return QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
}

/// A folder of this process, removed at exit. In memory where the system offers it: the
/// settings store syncs every file it writes to disk, which would cap a run at a few dozen inputs
/// a second.
inline const QString& scratch_dir() {
    static const QString memory = QStringLiteral("/dev/shm");
    static QTemporaryDir dir(QFileInfo(memory).isDir() && QFileInfo(memory).isWritable()
                                 ? memory + QStringLiteral("/quenlo-fuzz-XXXXXX")
                                 : QDir::tempPath() + QStringLiteral("/quenlo-fuzz-XXXXXX"));
    if (!dir.isValid()) {
        std::fprintf(stderr, "fuzz: no temporary folder\n");
        std::abort();
    }
    static const QString path = dir.path();
    return path;
}

/// A broken promise of the code under test: libFuzzer keeps the input that led here.
inline void require(bool condition, const char* what) {
    if (condition) return;
    std::fprintf(stderr, "fuzz: broken promise: %s\n", what);
    std::abort();
}

}  // namespace fuzz
