#include <ki/log/GLog.h>
#include <ki/qt/guitools/GIconCache.h>

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QIconEngine>
#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QSaveFile>
#include <QSet>
#include <QStandardPaths>
#include <QTimer>

#include <cstring>
#include <optional>

namespace ki::qt::icon_cache {

namespace {

constexpr quint32 MAGIC = 0x4B494943;  // "KIIC"
constexpr quint32 FORMAT_VERSION = 1;
constexpr int SAVE_DELAY_MS = 2000;
constexpr int MAX_SIDE = 2048;

struct Store {
    bool fileSet = false;
    QString file;
    bool loaded = false;
    QHash<QString, QImage> images;
    // What this run used: only these are written, so the file never collects old renderings.
    QSet<QString> used;
    bool dirty = false;
    bool saveQueued = false;
    bool quitConnected = false;
    // Said once: after that the icons are drawn all the same, without a word.
    bool writeFailed = false;
    int renders = 0;
};

Store& store() {
    static Store s;
    return s;
}

QString default_file() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
    return folder.isEmpty() ? QString() : QDir(folder).filePath(QStringLiteral("icons.bin"));
}

QString& current_file() {
    Store& s = store();
    if (!s.fileSet) {
        s.fileSet = true;
        s.file = default_file();
    }
    return s.file;
}

// The stored renderings, or nothing when the file is missing or not one of ours.
QHash<QString, QImage> read_file(const QString& path) {
    QHash<QString, QImage> images;
    QFile f(path);
    if (path.isEmpty() || !f.open(QIODevice::ReadOnly)) return images;
    QDataStream in(f.readAll());
    in.setVersion(QDataStream::Qt_6_0);
    quint32 magic = 0, version = 0, qtVersion = 0, count = 0;
    in >> magic >> version >> qtVersion >> count;
    // Another Qt may render differently: start afresh.
    if (magic != MAGIC || version != FORMAT_VERSION || qtVersion != QT_VERSION || count > 10000) {
        if (magic != MAGIC || in.status() != QDataStream::Ok)
            pp_warn("icon_cache, '$' is not a file of icon renderings, made again", path);
        return images;
    }
    for (quint32 i = 0; i < count; ++i) {
        QString key;
        quint32 width = 0, height = 0, format = 0;
        QByteArray bits;
        in >> key >> width >> height >> format >> bits;
        const bool sane = in.status() == QDataStream::Ok && width > 0 && height > 0 && width <= MAX_SIDE &&
                          height <= MAX_SIDE && format > QImage::Format_Invalid &&
                          format < QImage::NImageFormats;
        if (!sane) {
            pp_warn("icon_cache, '$' is damaged, its renderings are made again", path);
            return {};
        }
        QImage image(static_cast<int>(width), static_cast<int>(height), static_cast<QImage::Format>(format));
        if (image.isNull() || image.sizeInBytes() != bits.size()) {
            pp_warn("icon_cache, '$' is damaged, its renderings are made again", path);
            return {};
        }
        std::memcpy(image.bits(), bits.constData(), size_t(bits.size()));
        images.insert(key, image);
    }
    return images;
}

Store& loaded_store() {
    Store& s = store();
    if (!s.loaded) {
        s.loaded = true;
        s.images = read_file(current_file());
    }
    if (!s.quitConnected && QCoreApplication::instance() != nullptr) {
        s.quitConnected = true;
        QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, [] { save(); });
    }
    return s;
}

void queue_save() {
    Store& s = store();
    if (s.saveQueued || QCoreApplication::instance() == nullptr) return;
    s.saveQueued = true;
    QTimer::singleShot(SAVE_DELAY_MS, QCoreApplication::instance(), [] {
        store().saveQueued = false;
        save();
    });
}

class CachedSvgEngine final : public QIconEngine {
public:
    explicit CachedSvgEngine(QString path) : path(std::move(path)) {}

    QIconEngine* clone() const override { return new CachedSvgEngine(*this); }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        if (size.isEmpty()) return {};
        Store& s = loaded_store();
        const QString key = content_key() + QStringLiteral("|%1x%2|%3|%4")
                                                .arg(size.width())
                                                .arg(size.height())
                                                .arg(int(mode))
                                                .arg(int(state));
        s.used.insert(key);
        if (const auto found = s.images.constFind(key); found != s.images.cend())
            return QPixmap::fromImage(*found);
        // Device pixels already: the icon asking has applied the screen's ratio.
        const QPixmap rendered = svg().pixmap(size, 1.0, mode, state);
        ++s.renders;
        if (rendered.isNull()) return rendered;
        s.images.insert(key, rendered.toImage());
        s.dirty = true;
        queue_save();
        return rendered;
    }

    // As the SVG engine answers it: the size of the rendering.
    QSize actualSize(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        return pixmap(size, mode, state).size();
    }

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override {
        const qreal ratio = painter->device() != nullptr ? painter->device()->devicePixelRatio() : 1.0;
        QPixmap pm = pixmap(rect.size() * ratio, mode, state);
        pm.setDevicePixelRatio(ratio);
        painter->drawPixmap(rect.topLeft(), pm);
    }

    // Asked on every layout pass and paint: the file is looked up once per icon.
    bool isNull() override {
        if (!exists) exists = QFileInfo::exists(path);
        return !*exists;
    }

private:
    // The document's content names its renderings, not its path: a changed file is drawn anew.
    const QString& content_key() {
        if (contentKey.isEmpty()) {
            QFile f(path);
            const QByteArray bytes = f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
            contentKey = QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Md5).toHex());
        }
        return contentKey;
    }

    // Made on the first rendering only: this is what loads the SVG stack.
    const QIcon& svg() {
        if (real.isNull()) real = QIcon(path);
        return real;
    }

    QString path;
    QString contentKey;
    QIcon real;
    std::optional<bool> exists;
};

}  // namespace

QIcon make(const QString& path) {
    return QIcon(new CachedSvgEngine(path));
}

void set_file(const QString& file) {
    Store& s = store();
    s.fileSet = true;
    s.file = file;
    s.loaded = false;
    s.images.clear();
    s.used.clear();
    s.dirty = false;
    s.writeFailed = false;
}

QString file() {
    return current_file();
}

bool save() {
    Store& s = store();
    if (!s.dirty) return true;
    const QString path = current_file();
    if (path.isEmpty() || s.writeFailed) return false;
    QDir().mkpath(QFileInfo(path).path());
    QSaveFile out(path);
    if (!out.open(QIODevice::WriteOnly)) {
        pp_warn("icon_cache, cannot write '$': $", path, out.errorString());
        s.writeFailed = true;
        return false;
    }
    QByteArray bytes;
    {
        QDataStream data(&bytes, QIODevice::WriteOnly);
        data.setVersion(QDataStream::Qt_6_0);
        quint32 count = 0;
        for (const QString& key : std::as_const(s.used)) count += s.images.contains(key) ? 1 : 0;
        data << MAGIC << FORMAT_VERSION << quint32(QT_VERSION) << count;
        for (const QString& key : std::as_const(s.used)) {
            const auto found = s.images.constFind(key);
            if (found == s.images.cend()) continue;
            const QImage& image = *found;
            data << key << quint32(image.width()) << quint32(image.height()) << quint32(image.format())
                 << QByteArray(reinterpret_cast<const char*>(image.constBits()), image.sizeInBytes());
        }
    }
    out.write(bytes);
    s.dirty = false;
    if (!out.commit()) {
        pp_warn("icon_cache, cannot write '$': $", path, out.errorString());
        s.writeFailed = true;
        return false;
    }
    return true;
}

int renders() {
    return store().renders;
}

}  // namespace ki::qt::icon_cache
