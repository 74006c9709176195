#include <ki/tools/file.h>

#include <QFile>
#include <QFileInfo>
#include <QTextStream>

namespace ki::io::file {

bool exists(const QString& path) { return !path.isEmpty() && QFileInfo(path).isFile(); }

namespace {

ki::GSysResult<bool> open_read(QFile& f) {
    ki::GSysResult<bool> r;
    if (!f.exists()) {
        r.set_error(EC_IO, 10, "\"$\" does not exist", f.fileName());
    } else if (!f.open(QIODevice::ReadOnly)) {
        r.set_error(EC_QT_CORE, static_cast<int>(f.error()), "cannot open '$': $", f.fileName(), f.errorString());
    } else {
        r.value = true;
    }
    return r;
}

}  // namespace

ki::GSysResult<QByteArray> read_all(const QString& path) {
    QFile f(path);
    const auto opened = open_read(f);
    if (!opened.ok()) return ki::GSysResult<QByteArray>(opened.get_error());
    return f.readAll();
}

ki::GSysResult<QStringList> read_lines(const QString& path, int maxLines) {
    QFile f(path);
    const auto opened = open_read(f);
    if (!opened.ok()) return ki::GSysResult<QStringList>(opened.get_error());
    QTextStream in(&f);
    in.setEncoding(QStringConverter::Utf8);
    QStringList lines;
    QString line;
    while ((maxLines <= 0 || lines.size() < maxLines) && in.readLineInto(&line)) {
        if (line.endsWith(u'\r')) line.chop(1);
        lines.append(line);
    }
    return lines;
}

}  // namespace ki::io::file
