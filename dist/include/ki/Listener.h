#pragma once
// Named callback lists through which components publish events. A subscriber registers under a
// name of its own choosing, so it can replace or remove its callback without keeping a handle.
//
// Rules of use:
// - A walk runs over a copy of the items taken before the first callback. A callback may
//   append, set, remove or disable items of the listener it is fired from: items added during
//   a walk wait for the next event; items removed or disabled during it are not called any
//   more; a replaced callback runs in its old form until the walk ends.
// - A callback may even destroy the listener it is fired from: the walk notices and stops.
// - A queued delivery whose listener has been destroyed before the event loop runs it is
//   dropped silently.
// - Listeners are not locked: use them from the GUI thread; other threads fire QUEUED only.

#include <ki/log/GLog.h>

#include <QCoreApplication>
#include <QMetaObject>
#include <QString>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

namespace ki {

/// The payload of events that carry nothing.
struct NO_PAYLOAD {
    bool operator==(const NO_PAYLOAD&) const = default;
};

/// How `fire_event` delivers: at once in the caller's thread, or later in the application's
/// event loop.
enum class FIRE_EVENT { DIRECT, QUEUED };

/// The polymorphic base of every listener, so that a listener can be silenced without
/// knowing its payload type.
class BaseListener {
public:
    explicit BaseListener(const QString& listener_name = {}) : name(listener_name) {}
    virtual ~BaseListener() = default;
    virtual void enable_all_listener(bool enable) = 0;

    /// Only used for the destruction trace; may be empty.
    QString name;
};

template <typename T>
struct ListenerItem {
    std::function<void(const T&)> callback;
    void* reserved = nullptr;
    std::string name;
    bool enabled = true;
    std::function<void()> callback_no_payload;
};

template <typename T>
class Listener : public BaseListener {
public:
    using Callback = std::function<void(const T&)>;
    using CallbackNoPayload = std::function<void()>;

    /// The subscriber name used by `+=` and `=`.
    static constexpr const char* DEFAULT_NAME = "__default";

    explicit Listener(const QString& listener_name = {}) : BaseListener(listener_name) {}
    ~Listener() override {
        if (!name.isEmpty()) pp("Listener::~Listener@$", name);
    }
    // Queued deliveries and running walks hold this object's address.
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    /// Inserts an enabled item; an existing item of that name is kept unchanged. Returns
    /// whether the item was inserted.
    bool append(const std::string& item_name, Callback cb) {
        return insert_new(item_name, std::move(cb), nullptr);
    }
    bool append(const std::string& item_name, CallbackNoPayload cb) {
        return insert_new(item_name, nullptr, std::move(cb));
    }

    /// Inserts, or replaces the callback of the item of that name (its enabled state stays).
    void set(const std::string& item_name, Callback cb) { replace(item_name, std::move(cb), nullptr); }
    void set(const std::string& item_name, CallbackNoPayload cb) {
        replace(item_name, nullptr, std::move(cb));
    }

    Listener& operator+=(Callback cb) {
        append(DEFAULT_NAME, std::move(cb));
        return *this;
    }
    Listener& operator+=(CallbackNoPayload cb) {
        append(DEFAULT_NAME, std::move(cb));
        return *this;
    }
    Listener& operator=(Callback cb) {
        set(DEFAULT_NAME, std::move(cb));
        return *this;
    }
    Listener& operator=(CallbackNoPayload cb) {
        set(DEFAULT_NAME, std::move(cb));
        return *this;
    }

    /// Returns whether an item of that name was there.
    bool remove(const std::string& item_name) { return items.erase(item_name) > 0; }
    void clear() { items.clear(); }

    void enable_all_listener(bool enable) override {
        for (auto& entry : items) entry.second.enabled = enable;
    }
    /// Returns whether an item of that name exists.
    bool enable_listener(const std::string& item_name, bool enable) {
        auto it = items.find(item_name);
        if (it == items.end()) return false;
        it->second.enabled = enable;
        return true;
    }

    bool has_listener() const { return !items.empty(); }
    bool contains(const std::string& item_name) const { return items.contains(item_name); }
    bool is_enabled(const std::string& item_name) const {
        auto it = items.find(item_name);
        return it != items.end() && it->second.enabled;
    }
    std::size_t size() const { return items.size(); }

    /// Calls every enabled item with `payload`, in no promised order. QUEUED copies the payload
    /// and walks the items as they are when the event loop gets to it.
    void fire_event(const T& payload, FIRE_EVENT mode = FIRE_EVENT::DIRECT) {
        if (mode == FIRE_EVENT::DIRECT) {
            deliver(payload);
            return;
        }
        QCoreApplication* app = QCoreApplication::instance();
        if (app == nullptr) {
            pp_error("Listener::fire_event, no application object, queued event dropped");
            return;
        }
        QMetaObject::invokeMethod(
            app,
            [this, guard = std::weak_ptr<const int>(alive), payload]() {
                if (!guard.expired()) deliver(payload);
            },
            Qt::QueuedConnection);
    }

    /// Firing without a payload, for events that carry nothing.
    void fire_event(FIRE_EVENT mode = FIRE_EVENT::DIRECT) requires std::is_same_v<T, NO_PAYLOAD> {
        fire_event(NO_PAYLOAD{}, mode);
    }

private:
    bool insert_new(const std::string& item_name, Callback cb, CallbackNoPayload cb_no_payload) {
        if (items.contains(item_name)) {
            // The placeholder stays unfilled on purpose: this exact line is what people grep for.
            pp("Listener::append '$' already appended!");
            return false;
        }
        ListenerItem<T> item;
        item.callback = std::move(cb);
        item.name = item_name;
        item.callback_no_payload = std::move(cb_no_payload);
        items.emplace(item_name, std::move(item));
        return true;
    }

    void replace(const std::string& item_name, Callback cb, CallbackNoPayload cb_no_payload) {
        auto it = items.find(item_name);
        if (it == items.end()) {
            insert_new(item_name, std::move(cb), std::move(cb_no_payload));
            return;
        }
        it->second.callback = std::move(cb);
        it->second.callback_no_payload = std::move(cb_no_payload);
    }

    void deliver(const T& payload) {
        if (items.empty()) return;
        // Callbacks may change or destroy this listener, so walk a copy and re-check the live
        // state before each call.
        std::vector<ListenerItem<T>> snapshot;
        snapshot.reserve(items.size());
        for (const auto& entry : items) snapshot.push_back(entry.second);
        const std::weak_ptr<const int> guard = alive;
        for (const ListenerItem<T>& item : snapshot) {
            if (guard.expired()) return;
            if (!is_enabled(item.name)) continue;
            if (item.callback)
                item.callback(payload);
            else if (item.callback_no_payload)
                item.callback_no_payload();
        }
    }

    std::unordered_map<std::string, ListenerItem<T>> items;
    // Expires with this object; queued deliveries and running walks check it before touching us.
    std::shared_ptr<const int> alive = std::make_shared<const int>(0);
};

/// Silences a listener for the lifetime of the guard. On exit every item is enabled again,
/// also the items that were disabled before: use it only around listeners whose items are all
/// enabled.
class StopListenerTemporary {
public:
    explicit StopListenerTemporary(BaseListener& silenced) : listener(silenced) {
        listener.enable_all_listener(false);
    }
    ~StopListenerTemporary() { listener.enable_all_listener(true); }
    StopListenerTemporary(const StopListenerTemporary&) = delete;
    StopListenerTemporary& operator=(const StopListenerTemporary&) = delete;

private:
    BaseListener& listener;
};

}  // namespace ki
