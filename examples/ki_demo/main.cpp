// A small window built only from the framework: panels, buttons, a slider, the row scroller
// over 100,000 rows, the options menu and the log panel.
//
//   ki_demo                         opens the window
//   ki_demo --screenshot <folder>   saves the window in the normal, dark and green theme as
//                                   PNG files into <folder>, then quits
#include <ki/log/GLog.h>
#include <ki/qt/GApp.h>
#include <ki/qt/GMainWindow.h>
#include <ki/qt/components/GButton.h>
#include <ki/qt/components/GLabel.h>
#include <ki/qt/components/GMenu.h>
#include <ki/qt/components/GPanel.h>
#include <ki/qt/components/GSplitter.h>
#include <ki/qt/components/GenericSlider.h>
#include <ki/qt/components/otf/GDataScroller.h>
#include <ki/qt/dialogs/GPanelLogView.h>
#include <ki/qt/guitools/GGui.h>
#include <ki/qt/lang.h>

#include <QDir>
#include <QTimer>

using namespace ki::qt;

namespace {

class DemoModel : public otf::GModel {
public:
    long long row_count() const override { return 100000; }
    int get_row_height(int) const override { return 40; }
    GPanel* gen_panel_row(long long row, otf::PanelData* data) override {
        GPanel* panel = GModel::gen_panel_row(row, data);
        panel->set_margins(8, 4, 8, 4);
        panel->set_spacing(0);
        GLabel* title = panel->gen_label(QStringLiteral("Row %1").arg(row + 1));
        title->set_font_point_size(title->font().pointSize() + 2);
        panel->gen_label(lang::tt("generated when shown", "beim Anzeigen erzeugt", "создаётся при показе"));
        for (QWidget* child : panel->findChildren<QWidget*>())
            child->setAttribute(Qt::WA_TransparentForMouseEvents);
        return panel;
    }
};

class DemoWindow : public GMainWindow {
public:
    void setup() override {
        setup_node<WindowClazz<"KiDemo">>();
        GMainWindow::setup();
        ini();
        restore_state();
        show();
        post_ini();
        gApp->add_window(this);
    }

    void ini() override {
        setWindowTitle(QStringLiteral("ki demo"));
        GPanel* main = gen_main_panel(GLAYOUT::VERT);
        main->set_margins(6);
        GPanel* content = gen_log_panel(main);
        GSplitter* split = content->gen_splitter(Qt::Horizontal, QStringLiteral("split"));

        scroller = new otf::GDataScroller(split);
        split->add_widget(scroller, 0);
        scroller->ini(&model);
        scroller->liRowClicked += [this](const long long& row) {
            info->setText(lang::tt("Selected row %1", "Zeile %1 gewählt", "Выбрана строка %1").arg(row + 1));
            ki::pp("demo, row clicked:$", row);
        };

        GPanel* right = split->gen_panel(GLAYOUT::VERT, QStringLiteral("right"), 1);
        right->set_margins(12);
        right->set_spacing(10);
        GLabel* heading = right->gen_label(QStringLiteral("漢字 quenlo · ki"));
        heading->set_font_point_size(22);
        info = right->gen_label(
            lang::tt("Pick a row on the left.", "Links eine Zeile wählen.", "Выберите строку слева."));
        info->setWordWrap(true);

        GPanel* buttons = right->gen_panel(GLAYOUT::HORZ, QStringLiteral("buttons"));
        GButton* options =
            buttons->gen_button("^icons/wheel.svg", lang::tt("Options", "Optionen", "Настройки"));
        GButton* full = buttons->gen_button(
            "^icons/expand.svg", lang::tt("Toggle fullscreen", "Vollbild umschalten", "Полный экран"));
        GButton* theme = buttons->gen_button("^icons/theme.svg",
                                             lang::tt("Next theme", "Nächstes Design", "Следующая тема"));
        GButton* logger =
            buttons->gen_button("^icons/log.svg", lang::tt("Show/Hide Log", "Protokoll ein/aus", "Журнал"));
        GButton* up = buttons->gen_button("^icons/ar_left.svg", lang::tt("Previous", "Zurück", "Назад"));
        GButton* down = buttons->gen_button("^icons/ar_right.svg", lang::tt("Next", "Weiter", "Вперёд"));
        buttons->add_stretch();
        options->liClick += [this]() { on_menu_options(OPTIONS_ALL); };
        full->liClick += [this]() { on_toggle_fullscreen(); };
        theme->liClick += [this]() { on_rotate_themes(); };
        logger->liClick += [this]() { on_logger(); };
        up->liClick += [this]() { scroller->update_index_win_top(scroller->get_index_win_top() - 1); };
        down->liClick += [this]() { scroller->update_index_win_top(scroller->get_index_win_top() + 1); };

        GPanel* speed = right->gen_panel(GLAYOUT::HORZ, QStringLiteral("speed"));
        GLabel* caption = speed->gen_label(lang::tt("Speed", "Tempo", "Скорость"));
        auto* slider = new GenericSlider<int>(speed, 1, 8);
        speed->add_widget(slider, 1);
        GLabel* value = speed->gen_label(QStringLiteral("3"));
        value->setMinimumWidth(value->fontMetrics().horizontalAdvance(QStringLiteral("00")));
        slider->set_value_no_notify(3);
        slider->liValue += [value](const int& v) { value->setText(QString::number(v)); };
        caption->setBuddy(slider);
        right->add_stretch();
        split->setSizes({260, 600});

        log_panel_control_icons(nullptr, "^icons/wheel.svg",
                                lang::tt("Log options", "Protokolloptionen", "Журнал"), 0);
    }

    otf::GDataScroller* scroller = nullptr;
    GLabel* info = nullptr;
    DemoModel model;
};

void save_screenshots(DemoWindow& win, const QString& folder) {
    QDir().mkpath(folder);
    if (!win.is_logger_visible()) win.on_logger();
    win.model.set_selected_index(2);
    win.scroller->update_model();
    for (unsigned int theme : {0u, 1u, 2u}) {
        win.set_theme(theme);
        ki::pp_info("demo, theme $ applied, saving a picture", themes::theme_to_string(theme));
        for (int i = 0; i < 5; ++i) QCoreApplication::processEvents();
        if (win.get_panel_log_view() != nullptr) win.get_panel_log_view()->flush();
        const QString file =
            QDir(folder).filePath(QStringLiteral("ki_demo_%1.png").arg(themes::theme_to_string(theme)));
        if (!win.grab().save(file))
            ki::pp_error("demo, cannot write '$'", file);
        else
            ki::pp_info("demo, saved '$'", file);
        GMenu* menu = win.gen_menu_options(GMainWindow::OPTIONS_ALL);
        menu->popup(win.mapToGlobal(QPoint(300, 140)));
        for (int i = 0; i < 5; ++i) QCoreApplication::processEvents();
        menu->grab().save(
            QDir(folder).filePath(QStringLiteral("ki_demo_menu_%1.png").arg(themes::theme_to_string(theme))));
        menu->close();
    }
}

}  // namespace

int main(int argc, char** argv) {
    themes::set_theme_default(themes::THEME_NORMAL);
    GApp::prepare_settings(QStringLiteral("quenlo.example"), 1, true, QStringLiteral("ki_demo"));
    GApp app(argc, argv, nullptr);
    set_res_prefix(QStringLiteral(":/wb/shared-res"));
    DemoWindow win;
    win.resize(960, 640);
    win.setup();
    const QString folder = GApp::get_argv().value_string(QStringLiteral("screenshot"));
    if (!folder.isEmpty()) {
        QTimer::singleShot(300, &win, [&win, folder]() {
            save_screenshots(win, folder);
            QCoreApplication::quit();
        });
    }
    return app.exec();
}
