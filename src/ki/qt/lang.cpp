#include <ki/qt/lang.h>

#include <atomic>

namespace ki::qt::lang {

namespace {
// Read by texts built on worker threads (log lines, messages) as well.
std::atomic<int> current{QLocale::English};
}  // namespace

void set_lang(QLocale::Language language) {
    if (current.exchange(language) == language) return;
    pp("lang::set_lang, $", lang_to_string(language));
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
