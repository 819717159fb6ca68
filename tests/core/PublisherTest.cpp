#include "core/Future.h"
#include "core/ManualScheduler.h"
#include "core/Publisher.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace orvanta::core;

namespace {

// Records everything a subscription delivers, in order.
template <class T>
struct Recorder {
    std::vector<std::string> events;
    Cancellable subscribe(const Publisher<T>& p) {
        return p.sink(
            [this](const Completion& c) {
                events.push_back(c.isFinished() ? "finished" : "failed:" + c.failure->localizedDescription());
            },
            [this](T v) { events.push_back("value:" + std::to_string(v)); });
    }
};

const Error boom("Test", 7, "boom");

} // namespace

TEST(Publisher, JustAndFailDeliverSynchronouslyOnSubscription) {
    Recorder<int> just, fail;
    auto a = just.subscribe(Just(3));
    auto b = fail.subscribe(Fail<int>(boom));
    EXPECT_EQ(just.events, (std::vector<std::string>{"value:3", "finished"}));
    EXPECT_EQ(fail.events, (std::vector<std::string>{"failed:boom"}));
}

TEST(Publisher, IsColdAndRunsTheProducerPerSubscription) {
    int runs = 0;
    auto p = Deferred([&] { ++runs; return Just(runs); });
    EXPECT_EQ(runs, 0);
    Recorder<int> first, second;
    auto a = first.subscribe(p);
    auto b = second.subscribe(p);
    EXPECT_EQ(runs, 2);
    EXPECT_EQ(second.events.front(), "value:2");
}

TEST(Publisher, FlatMapForwardsInnerValueAndFinishesAfterBoth) {
    auto queue = std::make_shared<ManualScheduler>();
    // The inner stream delivers later, on the queue: the result must not finish before it.
    auto p = Just(2).flatMap([queue](int v) { return Just(v * 10).receiveOn(queue); });
    Recorder<int> r;
    auto c = r.subscribe(p);
    EXPECT_TRUE(r.events.empty());
    queue->runPending();
    EXPECT_EQ(r.events, (std::vector<std::string>{"value:20", "finished"}));
}

TEST(Publisher, FailuresPassThroughFlatMapFromEitherSide) {
    Recorder<int> upstream, inner;
    auto a = upstream.subscribe(Fail<int>(boom).flatMap([](int v) { return Just(v); }));
    auto b = inner.subscribe(Just(1).flatMap([](int) { return Fail<int>(boom); }));
    EXPECT_EQ(upstream.events, (std::vector<std::string>{"failed:boom"}));
    EXPECT_EQ(inner.events, (std::vector<std::string>{"failed:boom"}));
}

TEST(Publisher, TryMapTurnsAThrownErrorIntoTheFailure) {
    Recorder<int> ok, thrown;
    auto a = ok.subscribe(Just(4).tryMap([](int v) { return v + 1; }));
    auto b = thrown.subscribe(Just(4).tryMap([](int) -> int { throw boom; }));
    EXPECT_EQ(ok.events, (std::vector<std::string>{"value:5", "finished"}));
    EXPECT_EQ(thrown.events, (std::vector<std::string>{"failed:boom"}));
}

TEST(Publisher, ReceiveOnDeliversValueThenCompletionOnTheQueue) {
    auto queue = std::make_shared<ManualScheduler>();
    Recorder<int> r;
    auto c = r.subscribe(Just(1).receiveOn(queue));
    EXPECT_TRUE(r.events.empty());
    EXPECT_EQ(queue->runPending(), 2);
    EXPECT_EQ(r.events, (std::vector<std::string>{"value:1", "finished"}));
}

TEST(Publisher, DroppingTheCancellableStopsDelivery) {
    auto queue = std::make_shared<ManualScheduler>();
    Recorder<int> r;
    bool aborted = false;
    {
        auto p = Publisher<int>([&](const std::shared_ptr<Sink<int>>& sink) {
            sink->token()->onCancel([&] { aborted = true; });
            queue->async([sink] { sink->receive(9); sink->complete(Completion::finished()); });
        });
        auto c = r.subscribe(p);
    }
    EXPECT_TRUE(aborted);
    queue->runPending();
    EXPECT_TRUE(r.events.empty());
}

TEST(Future, RunsOnceAtCreationAndReplaysTheOutcome) {
    int runs = 0;
    std::optional<Promise<int>> promise;
    auto f = Future<int>([&](Promise<int> p) { ++runs; promise = p; });
    EXPECT_EQ(runs, 1);
    Recorder<int> early, late;
    auto a = early.subscribe(f);
    EXPECT_TRUE(early.events.empty());
    promise->succeed(5);
    promise->fail(boom); // a second fulfilment is ignored
    auto b = late.subscribe(f);
    EXPECT_EQ(early.events, (std::vector<std::string>{"value:5", "finished"}));
    EXPECT_EQ(late.events, early.events);
    EXPECT_EQ(runs, 1);
}
