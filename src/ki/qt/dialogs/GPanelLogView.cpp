#include <ki/qt/dialogs/GPanelLogView.h>
#include <ki/qt/themes.h>

#include <QApplication>
#include <QClipboard>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTextBlock>

namespace ki::qt {

GPanelLogView::GPanelLogView(QWidget* parent, const log::LogConfig& initial)
    : GPanel(parent, GLAYOUT::VERT, QStringLiteral("panLogView")), config(initial) {
    log::add_log_appender(this);
}

QPlainTextEdit* GPanelLogView::ensure_view() {
    if (view != nullptr) return view;
    view = new QPlainTextEdit(this);
    view->setObjectName(QStringLiteral("logText"));
    view->setReadOnly(true);
    view->setMaximumBlockCount(MAX_LINES);
    view->setUndoRedoEnabled(false);
    view->setFrameShape(QFrame::StyledPanel);
    apply_wrap_mode(get_config());
    add_widget(view, 1);
    // A child added to a shown panel would only appear with the next event loop pass.
    if (isVisible()) view->show();
    adapt();
    {
        std::lock_guard lock(mutex);
        viewBuilt = true;
    }
    flush();
    return view;
}

void GPanelLogView::showEvent(QShowEvent* ev) {
    ensure_view();
    GPanel::showEvent(ev);
}

void GPanelLogView::apply_wrap_mode(const log::LogConfig& cfg) {
    view->setLineWrapMode(cfg.autoScrollHorz ? QPlainTextEdit::NoWrap : QPlainTextEdit::WidgetWidth);
}

GPanelLogView::~GPanelLogView() {
    log::remove_log_appender(this);
}

log::LogConfig GPanelLogView::default_config() {
    log::LogConfig cfg;
    cfg.ini();
    // The panel is narrow: level and time are worth their room, the thread id rarely is.
    cfg.logControl =
        log::TRAILLER_LEVEL | log::TRAILLER_TIME | log::TRAILLER_SINCE_START | log::TRAILLER_MILLISECONDS;
    return cfg;
}

void GPanelLogView::log_string(unsigned int line_number, log::LOG_LEVEL level, const char* text) {
    std::lock_guard lock(mutex);
    if (level > config.logLevel) return;
    QString line = log::qs_trailler(line_number, level, GBits<unsigned int>(config.logControl));
    line += QString::fromUtf8(text != nullptr ? text : "nullptr");
    if (line.endsWith(QLatin1Char('\n'))) line.chop(1);
    pending.append(line);
    // One line less than the view holds, so the note about dropped lines stays in view.
    constexpr qsizetype keep = MAX_LINES - 1;
    if (pending.size() > keep) {
        dropped += pending.size() - keep;
        pending.erase(pending.begin(), pending.begin() + (pending.size() - keep));
    }
    schedule_flush();
}

void GPanelLogView::schedule_flush() {
    if (flushScheduled || !viewBuilt) return;
    flushScheduled = true;
    // Queued even on the GUI thread: the log mutex is held here and the view must not be
    // touched from inside a paint or layout that happened to log.
    QMetaObject::invokeMethod(
        this, [this]() { flush(); }, Qt::QueuedConnection);
}

void GPanelLogView::flush() {
    QStringList lines;
    long long lost = 0;
    {
        std::lock_guard lock(mutex);
        if (!viewBuilt) return;
        lines.swap(pending);
        lost = dropped;
        dropped = 0;
        flushScheduled = false;
    }
    if (lines.isEmpty()) return;
    if (lost > 0) lines.prepend(QStringLiteral("... %1 lines dropped ...").arg(lost));
    QScrollBar* bar = view->verticalScrollBar();
    const bool at_end = bar->value() >= bar->maximum() - 2;
    view->appendPlainText(lines.join(QLatin1Char('\n')));
    if (at_end) bar->setValue(bar->maximum());
}

void GPanelLogView::set_config(const log::LogConfig& cfg) {
    {
        std::lock_guard lock(mutex);
        config = cfg;
    }
    if (view == nullptr) return;
    apply_wrap_mode(cfg);
    adapt();
}

log::LogConfig GPanelLogView::get_config() const {
    std::lock_guard lock(mutex);
    return config;
}

void GPanelLogView::apply(const log::LogConfigTemp& temp) {
    set_enabled(temp.enabled);
    log::LogConfig cfg = get_config();
    cfg.logLevel = temp.config.logLevel;
    set_config(cfg);
}

void GPanelLogView::clear_log() {
    ensure_view()->clear();
}

void GPanelLogView::copy_to_clipboard() {
    if (QClipboard* clipboard = QApplication::clipboard()) clipboard->setText(get_text());
}

void GPanelLogView::add_debug_line() {
    ensure_view()->appendPlainText(QString(60, QLatin1Char('-')));
}

QString GPanelLogView::get_text() {
    return ensure_view()->toPlainText();
}

int GPanelLogView::get_line_count() {
    QPlainTextEdit* text = ensure_view();
    // An empty document still has one empty block.
    return text->document()->isEmpty() ? 0 : text->document()->blockCount();
}

QPlainTextEdit* GPanelLogView::get_text_view() {
    return ensure_view();
}

void GPanelLogView::adapt() {
    if (view == nullptr) return;
    QFont font = themes::get_mono_font();
    font.setPointSize(int(std::clamp(get_config().fontSize, 6u, 40u)));
    view->setFont(font);
}

}  // namespace ki::qt
