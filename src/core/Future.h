#pragma once
// A stream whose work runs once, at creation: `work` receives a promise to fulfil exactly
// once with a value or an Error. Every subscriber gets that outcome, at once if it is
// already known, otherwise on the thread that fulfils the promise.
// Thread: the promise may be fulfilled from any thread.

#include "core/Publisher.h"

#include <optional>
#include <variant>
#include <vector>

namespace orvanta::core {

template <class T>
class Promise {
public:
    using Outcome = std::variant<T, Error>;
    explicit Promise(std::function<void(Outcome)> fulfil) : fulfil_(std::move(fulfil)) {}
    void succeed(T value) const { fulfil_(Outcome(std::in_place_index<0>, std::move(value))); }
    void fail(Error error) const { fulfil_(Outcome(std::in_place_index<1>, std::move(error))); }

private:
    std::function<void(Outcome)> fulfil_;
};

template <class T, class F>
Publisher<T> Future(F work) {
    struct State {
        std::mutex mutex;
        std::optional<typename Promise<T>::Outcome> outcome;
        std::vector<std::shared_ptr<Sink<T>>> waiting;
    };
    auto deliver = [](const std::shared_ptr<Sink<T>>& sink, const typename Promise<T>::Outcome& outcome) {
        if (outcome.index() == 0) {
            sink->receive(std::get<0>(outcome));
            sink->complete(Completion::finished());
        } else {
            sink->complete(Completion::failed(std::get<1>(outcome)));
        }
    };
    auto state = std::make_shared<State>();
    work(Promise<T>([state, deliver](typename Promise<T>::Outcome outcome) {
        std::vector<std::shared_ptr<Sink<T>>> waiting;
        {
            std::lock_guard lock(state->mutex);
            if (state->outcome) return; // a promise is fulfilled once
            state->outcome = std::move(outcome);
            waiting.swap(state->waiting);
        }
        for (auto& sink : waiting) deliver(sink, *state->outcome);
    }));
    return Publisher<T>([state, deliver](const std::shared_ptr<Sink<T>>& sink) {
        {
            std::lock_guard lock(state->mutex);
            if (!state->outcome) {
                state->waiting.push_back(sink);
                return;
            }
        }
        deliver(sink, *state->outcome);
    });
}

} // namespace orvanta::core
