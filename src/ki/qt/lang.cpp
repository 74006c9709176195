#include <ki/qt/lang.h>

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QPointer>
#include <QTranslator>
#include <atomic>

namespace ki::qt::lang {

namespace {
// Read by texts built on worker threads (log lines, messages) as well.
std::atomic<int> current{QLocale::English};

// Qt's own texts: the buttons of standard dialogs, the file dialog, a line edit's menu. Our
// texts are chosen by tt(); these come from Qt's catalogue (Debian's qt6-translations-l10n).
// Without it they stay English, and the log says so. The translator belongs to the
// application object and goes with it.
void use_qt_texts(QLocale::Language language) {
    static QPointer<QTranslator> installed;
    QCoreApplication* app = QCoreApplication::instance();
    if (app == nullptr) return;
    if (installed) {
        QCoreApplication::removeTranslator(installed);
        delete installed;
    }
    // Only where our own texts are translated too: a French learner reads English throughout.
    if (language != QLocale::German && language != QLocale::Russian) return;
    auto* translator = new QTranslator(app);
    const QString folder = QLibraryInfo::path(QLibraryInfo::TranslationsPath);
    if (!translator->load(QLocale(language), QStringLiteral("qtbase"), QStringLiteral("_"), folder)) {
        pp_warn("lang, Qt's own texts stay English: no qtbase catalogue for $ in '$'", lang_to_string(language),
                folder);
        delete translator;
        return;
    }
    QCoreApplication::installTranslator(translator);
    installed = translator;
}
}  // namespace

void set_lang(QLocale::Language language) {
    if (current.exchange(language) == language) return;
    pp("lang::set_lang, $", lang_to_string(language));
    use_qt_texts(language);
    if (get_listener().has_listener()) get_listener().fire_event(int(language));
}

QLocale::Language get_lang() {
    return QLocale::Language(current.load());
}

bool is_english() {
    return get_lang() == QLocale::English;
}
bool is_german() {
    return get_lang() == QLocale::German;
}
bool is_russian() {
    return get_lang() == QLocale::Russian;
}

QString tt(const QString& english, const QString& german, const QString& russian) {
    switch (get_lang()) {
        case QLocale::German:
            return german;
        case QLocale::Russian:
            return russian;
        default:
            return english;
    }
}

Listener<int>& get_listener() {
    static Listener<int> listener;
    return listener;
}

QString lang_to_string(QLocale::Language language) {
    switch (language) {
        case QLocale::English:
            return QStringLiteral("English");
        case QLocale::German:
            return QStringLiteral("Deutsch");
        case QLocale::Russian:
            return QStringLiteral("Русский");
        default:
            return QLocale::languageToString(language);
    }
}

}  // namespace ki::qt::lang
