#pragma once
// A cold one-shot stream: nothing happens until a subscriber attaches, and each
// subscription runs the producer again. It delivers at most one value followed by a
// completion, or a failure carrying an Error.
//
// Operators: flatMap (subscribe to a stream made from the value), tryMap (map through a
// step that may throw an Error), receiveOn (re-deliver on another queue), sink (subscribe;
// the returned Cancellable ends the subscription when dropped).
// Thread: a value type; subscribing and delivery happen on whatever threads the producer uses.

#include "core/Cancellable.h"
#include "core/Scheduler.h"
#include "core/Sink.h"

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>

namespace orvanta::core {

template <class T>
class Publisher {
public:
    using Output = T;
    using Producer = std::function<void(const std::shared_ptr<Sink<T>>&)>;

    explicit Publisher(Producer producer) : producer_(std::move(producer)) {}

    void subscribe(const std::shared_ptr<Sink<T>>& sink) const { producer_(sink); }

    [[nodiscard]] Cancellable sink(std::function<void(const Completion&)> onCompletion,
                                   std::function<void(T)> onValue) const {
        auto token = std::make_shared<CancellationToken>();
        subscribe(std::make_shared<Sink<T>>(std::move(onValue), std::move(onCompletion), token));
        return Cancellable(token);
    }

    // `transform(value)` returns the Publisher whose value and completion are forwarded. A
    // stream delivers at most one value, so once this one has, the inner stream alone ends
    // the result, on the inner stream's thread; without a value, this stream's end passes.
    template <class F>
    auto flatMap(F transform) const {
        using Inner = std::invoke_result_t<F, T>;
        using U = typename Inner::Output;
        Producer upstream = producer_;
        return Publisher<U>([upstream, transform](const std::shared_ptr<Sink<U>>& down) {
            auto valueSeen = std::make_shared<std::atomic<bool>>(false);
            upstream(std::make_shared<Sink<T>>(
                [down, transform, valueSeen](T value) {
                    valueSeen->store(true);
                    transform(std::move(value))
                        .subscribe(std::make_shared<Sink<U>>([down](U inner) { down->receive(std::move(inner)); },
                                                             [down](const Completion& c) { down->complete(c); },
                                                             down->token()));
                },
                [down, valueSeen](const Completion& c) {
                    if (!c.isFinished() || !valueSeen->load()) down->complete(c);
                },
                down->token()));
        });
    }

    // `step(value)` returns the new value or throws an Error, which becomes the failure.
    template <class F>
    auto tryMap(F step) const {
        using U = std::invoke_result_t<F, T>;
        Producer upstream = producer_;
        return Publisher<U>([upstream, step](const std::shared_ptr<Sink<U>>& down) {
            upstream(std::make_shared<Sink<T>>(
                [down, step](T value) {
                    std::optional<U> mapped;
                    try {
                        mapped.emplace(step(std::move(value)));
                    } catch (const Error& error) {
                        return down->complete(Completion::failed(error));
                    }
                    down->receive(std::move(*mapped));
                },
                [down](const Completion& c) { down->complete(c); }, down->token()));
        });
    }

    // Delivers the value and the completion as tasks on `queue`, in order.
    Publisher<T> receiveOn(std::shared_ptr<Scheduler> queue) const {
        Producer upstream = producer_;
        return Publisher<T>([upstream, queue](const std::shared_ptr<Sink<T>>& down) {
            upstream(std::make_shared<Sink<T>>(
                [down, queue](T value) { queue->async([down, value = std::move(value)]() mutable { down->receive(std::move(value)); }); },
                [down, queue](const Completion& c) { queue->async([down, c] { down->complete(c); }); },
                down->token()));
        });
    }

private:
    Producer producer_;
};

// A stream that publishes `value` on subscription, on the subscribing thread, and finishes.
template <class T>
Publisher<T> Just(T value) {
    return Publisher<T>([value](const std::shared_ptr<Sink<T>>& sink) {
        sink->receive(value);
        sink->complete(Completion::finished());
    });
}

// A stream that fails with `error` on subscription, on the subscribing thread.
template <class T>
Publisher<T> Fail(Error error) {
    return Publisher<T>([error](const std::shared_ptr<Sink<T>>& sink) { sink->complete(Completion::failed(error)); });
}

// A stream made by `factory` only when a subscriber attaches, once per subscription.
template <class F>
auto Deferred(F factory) {
    using P = std::invoke_result_t<F>;
    using T = typename P::Output;
    return Publisher<T>([factory](const std::shared_ptr<Sink<T>>& sink) { factory().subscribe(sink); });
}

} // namespace orvanta::core
