#include "app/Diagnostics.h"

#include <ki/log/GLog.h>
#include <ki/qt/components/GMenu.h>
#include <ki/qt/lang.h>
#include <ki/qt/themes.h>

#include <QApplication>
#include <QDir>
#include <QMessageBox>

#include "app/Window.h"

namespace morvel::prog2 {

void Diagnostics::log_state(Window& window) {
    const LessonOptions options = window.get_options();
    ki::pp("Window::on_test1, control:$, drawConfig:$, rCircle:$, selected:$, incProgress:$",
           window.control.to_string(), options.drawConfig, options.rCircle, window.get_selected_index(),
           options.incSpeed);
}

void Diagnostics::count_test_value(Window& window) {
    ++window.options.valTest;
    ki::pp("Window::on_test2, valTest:$", window.options.valTest);
    window.save_settings_now();
}

bool Diagnostics::save_screenshots(Window& window, const QString& folder) {
    if (!QDir().mkpath(folder)) {
        ki::pp_error("Window::save_screenshots, cannot create '$'", folder);
        return false;
    }
    auto settle = []() {
        for (int i = 0; i < 10; ++i) QCoreApplication::processEvents();
    };
    auto save = [&folder](QWidget* widget, const QString& name) {
        const QString file = QDir(folder).filePath(name + QStringLiteral(".png"));
        if (widget->grab().save(file))
            ki::pp_info("Window::save_screenshots, saved '$'", file);
        else
            ki::pp_error("Window::save_screenshots, cannot write '$'", file);
    };
    auto save_menu = [&](const QString& name) {
        ki::qt::GMenu* menu = window.gen_menu_options(Window::OPTIONS_ALL);
        menu->popup(window.mapToGlobal(QPoint(40, 40)));
        settle();
        save(menu, name);
        menu->close();
    };
    auto save_about = [&](const QString& name) {
        window.on_help();
        settle();
        for (QWidget* top : QApplication::topLevelWidgets()) {
            if (auto* box = qobject_cast<QMessageBox*>(top); box != nullptr && box->isVisible()) {
                save(box, name);
                box->close();
            }
        }
    };
    ControlAnim& control = window.control;
    const unsigned int themeBefore = window.get_theme();
    const unsigned int flagsBefore = control.get_mode_flags();
    const long long selectedBefore = window.get_selected_index();
    const QLocale::Language langBefore = ki::qt::lang::get_lang();
    for (QLocale::Language language : {QLocale::English, QLocale::Russian}) {
        ki::qt::lang::set_lang(language);
        const QString suffix = language == QLocale::English ? QString() : QStringLiteral("_ru");
        for (unsigned int theme :
             {ki::qt::themes::THEME_NORMAL, ki::qt::themes::THEME_DARK, ki::qt::themes::THEME_GREEN}) {
            window.set_theme(theme);
            const QString name = ki::qt::themes::theme_to_string(theme) + suffix;
            control.set_mode_flags(MODE_TRANSLATION | MODE_AUTO_DRAW | MODE_SLIDER);
            window.on_index(7);
            for (int tick = 0; tick < 20; ++tick) window.on_timer();
            settle();
            save(&window, QStringLiteral("quenlo_watch_") + name);
            control.set_mode_flags(MODE_LEARN | MODE_TRANSLATION);
            window.control.set_strokes_learned(2);
            settle();
            save(&window, QStringLiteral("quenlo_learn_") + name);
            save_menu(QStringLiteral("quenlo_menu_") + name);
        }
        save_about(QStringLiteral("quenlo_about") + suffix);
    }
    ki::qt::lang::set_lang(langBefore);
    control.set_mode_flags(flagsBefore);
    window.set_theme(themeBefore);
    if (selectedBefore >= 0) window.on_index(static_cast<int>(selectedBefore));
    return true;
}

}  // namespace morvel::prog2
