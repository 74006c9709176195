#pragma once
// Names a window "<class>_<number>" (for example "CMainWindow_0"), the name under which its
// settings are stored. Each class name counts its own numbers; a number returned by a
// destroyed window is reused before a new one is drawn, so the first window of a class is
// always number 0 and finds the settings of the last run.

#include <QString>
#include <algorithm>
#include <cstddef>
#include <set>

namespace ki::qt {

/// A string literal usable as a template argument: WindowClazz<"WinHanzi">.
template <std::size_t N>
struct ClazzName {
    constexpr ClazzName(const char (&text)[N]) { std::copy_n(text, N, name); }
    char name[N]{};
};

class WindowClazzBase {
public:
    virtual ~WindowClazzBase() = default;
    virtual QString get_complete_name() const = 0;
    int get_id() const { return id; }

protected:
    explicit WindowClazzBase(int number) : id(number) {}
    int id;
};

template <ClazzName NAME>
class WindowClazz : public WindowClazzBase {
public:
    WindowClazz() : WindowClazzBase(take_id()) {}
    ~WindowClazz() override { sFreeIds.insert(id); }
    WindowClazz(const WindowClazz&) = delete;
    WindowClazz& operator=(const WindowClazz&) = delete;

    QString get_complete_name() const override {
        return QString::fromLatin1(NAME.name) + QLatin1Char('_') + QString::number(id);
    }
    static QString get_class_name() { return QString::fromLatin1(NAME.name); }

private:
    static int take_id() {
        if (!sFreeIds.empty()) {
            const int reused = *sFreeIds.begin();
            sFreeIds.erase(sFreeIds.begin());
            return reused;
        }
        return sNextId++;
    }

    static inline int sNextId = 0;
    static inline std::set<int> sFreeIds;
};

}  // namespace ki::qt
