#pragma once
// A two-way binding into state that someone else owns: reading goes to the owner's getter,
// writing to its setter. Copies share the same state. The dish screen builds bindings to
// its own properties; `Binding::cell` makes a binding to a fresh shared value (for a
// screen that keeps plain values, and for tests).
// Thread: get/set on the threads the owner's getter and setter allow; a cell's get/set may be
// called from any thread (the session reports tracking changes on its delegate queue).

#include <cassert>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>

namespace orvanta {

template <class T>
class Binding {
public:
    using Getter = std::function<T()>;
    using Setter = std::function<void(T)>;

    Binding(Getter getter, Setter setter) : get_(std::move(getter)), set_(std::move(setter)) {
        assert(get_ && set_);
    }

    // A binding to a new shared value holding `initial`.
    static Binding cell(T initial = T()) {
        struct Cell {
            std::mutex mutex;
            T value;
        };
        auto shared = std::make_shared<Cell>();
        shared->value = std::move(initial);
        return Binding(
            [shared] {
                std::lock_guard lock(shared->mutex);
                return shared->value;
            },
            [shared](T value) {
                std::lock_guard lock(shared->mutex);
                shared->value = std::move(value);
            });
    }

    T get() const { return get_(); }
    void set(T value) const { set_(std::move(value)); }

private:
    Getter get_;
    Setter set_;
};

} // namespace orvanta
