#pragma once
// The interface language: texts of the program exist in English, German and Russian.

#include <ki/Listener.h>

#include <QLocale>
#include <QString>

namespace ki::qt::lang {

/// Any language is accepted; texts fall back to English for languages without their own.
/// Fires `get_listener()` when the language changes.
void set_lang(QLocale::Language language);
QLocale::Language get_lang();

bool is_english();
bool is_german();
bool is_russian();

/// The text of the current language: German or Russian when that is the language, English
/// for every other language.
QString tt(const QString& english, const QString& german, const QString& russian);

/// Fired with the new `QLocale::Language` number after `set_lang` changed it.
Listener<int>& get_listener();

/// "English", "Deutsch", "Русский", or the language's own name for others.
QString lang_to_string(QLocale::Language language);

}  // namespace ki::qt::lang
