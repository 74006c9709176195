#pragma once
// The log panel: a read-only text view that registers itself as a log appender. Lines may come
// from any thread; they are queued and shown by the GUI thread, and both the queue and the
// view are bounded so that a flood of lines cannot eat the memory. The text view itself is
// built when the panel is first shown or asked for its text: most runs never open the log,
// and laying out a text document is a good part of a window's start-up.

#include <ki/log/LogAppender.h>
#include <ki/log/LogConfig.h>
#include <ki/log/LogConfigTemp.h>
#include <ki/qt/components/GPanel.h>

#include <QStringList>
#include <mutex>

class QPlainTextEdit;

namespace ki::qt {

class GPanelLogView : public GPanel, public log::LogAppender {
    Q_OBJECT
public:
    /// Lines kept in the view and, at most, waiting for it.
    static constexpr int MAX_LINES = 2000;

    /// Registers with the log at once.
    explicit GPanelLogView(QWidget* parent = nullptr, const log::LogConfig& config = default_config());
    /// Unregisters first, so no thread can hand it a line while it goes.
    ~GPanelLogView() override;

    /// Called by the log with its mutex held, from any thread: only queues the line.
    void log_string(unsigned int line_number, log::LOG_LEVEL level, const char* text) override;

    void set_config(const log::LogConfig& config);
    log::LogConfig get_config() const;
    /// Enables or disables the panel's logging and takes the level of `temp`.
    void apply(const log::LogConfigTemp& temp);
    static log::LogConfig default_config();

    /// Shows the queued lines now, if the text view exists; the GUI thread calls it on its own
    /// shortly after a line came. Until then the lines wait in the bounded queue.
    void flush();
    void clear_log();
    void copy_to_clipboard();
    /// A separator line the user can put in to mark a moment.
    void add_debug_line();

    /// The text, the line count and the view itself build the view (and flush) first.
    QString get_text();
    int get_line_count();
    QPlainTextEdit* get_text_view();

    /// Font (mono font at the configured size) and colours after a theme or font change.
    void adapt();

protected:
    void showEvent(QShowEvent* ev) override;

private:
    void schedule_flush();
    QPlainTextEdit* ensure_view();
    void apply_wrap_mode(const log::LogConfig& cfg);

    QPlainTextEdit* view = nullptr;

    // Guards everything below; taken by logging threads and the GUI thread.
    mutable std::mutex mutex;
    log::LogConfig config;
    QStringList pending;
    long long dropped = 0;
    bool flushScheduled = false;
    // Set once the view exists: before that, lines only queue up.
    bool viewBuilt = false;
};

}  // namespace ki::qt
