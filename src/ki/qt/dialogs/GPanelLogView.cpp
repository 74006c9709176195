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
    view = new QPlainTextEdit(this);
    view->setObjectName(QStringLiteral("logText"));
    view->setReadOnly(true);
    view->setMaximumBlockCount(MAX_LINES);
    view->setUndoRedoEnabled(false);
    view->setFrameShape(QFrame::StyledPanel);
    view->setLineWrapMode(initial.autoScrollHorz ? QPlainTextEdit::NoWrap : QPlainTextEdit::WidgetWidth);
    add_widget(view, 1);
    adapt();
    log::add_log_appender(this);
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
    if (flushScheduled) return;
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
    view->setLineWrapMode(cfg.autoScrollHorz ? QPlainTextEdit::NoWrap : QPlainTextEdit::WidgetWidth);
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
    view->clear();
}

void GPanelLogView::copy_to_clipboard() const {
    if (QClipboard* clipboard = QApplication::clipboard()) clipboard->setText(view->toPlainText());
}

void GPanelLogView::add_debug_line() {
    view->appendPlainText(QString(60, QLatin1Char('-')));
}

QString GPanelLogView::get_text() const {
    return view->toPlainText();
}

int GPanelLogView::get_line_count() const {
    // An empty document still has one empty block.
    return view->document()->isEmpty() ? 0 : view->document()->blockCount();
}

void GPanelLogView::adapt() {
    QFont font = themes::get_mono_font();
    font.setPointSize(int(std::clamp(get_config().fontSize, 6u, 40u)));
    view->setFont(font);
}

}  // namespace ki::qt
