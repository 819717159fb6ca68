#include "core/CancellationToken.h"
#include "core/Future.h"
#include "core/ManualScheduler.h"
#include "core/Publisher.h"
#include "core/Result.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace orvanta::core;

namespace {

// Records everything a subscription delivers, in order.
struct Recorder {
    std::vector<std::string> events;
    Cancellable subscribe(const Publisher<int>& p) {
        return p.sink(
            [this](const Completion& c) {
                events.push_back(c.isFinished() ? "finished" : "failed:" + c.failure->localizedDescription());
            },
            [this](int v) { events.push_back("value:" + std::to_string(v)); });
    }
};

const Error boom("Test", 7, "boom");
using Events = std::vector<std::string>;

} // namespace

// What each operator delivers when everything runs at subscription; a failure on either side
// of a flatMap or thrown inside tryMap ends the stream.
TEST(Publisher, OperatorsDeliverValuesAndFailuresSynchronously) {
    const std::pair<Publisher<int>, Events> cases[] = {
        {Just(3), {"value:3", "finished"}},
        {Fail<int>(boom), {"failed:boom"}},
        {Fail<int>(boom).flatMap([](int v) { return Just(v); }), {"failed:boom"}},
        {Just(1).flatMap([](int) { return Fail<int>(boom); }), {"failed:boom"}},
        {Just(4).tryMap([](int v) { return v + 1; }), {"value:5", "finished"}},
        {Just(4).tryMap([](int) -> int { throw boom; }), {"failed:boom"}},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        Recorder r;
        auto c = r.subscribe(cases[i].first);
        EXPECT_EQ(r.events, cases[i].second) << "case " << i;
    }
}

TEST(Publisher, IsColdAndRunsTheProducerPerSubscription) {
    int runs = 0;
    auto p = Deferred([&] { ++runs; return Just(runs); });
    EXPECT_EQ(runs, 0);
    Recorder first, second;
    auto a = first.subscribe(p);
    auto b = second.subscribe(p);
    EXPECT_EQ(second.events.front(), "value:2");
}

// receiveOn delivers the value and the completion as two turns of the queue; a flatMap whose
// inner stream delivers there does not finish before it.
TEST(Publisher, DeliveriesOnAQueueWaitForItsTurns) {
    auto queue = std::make_shared<ManualScheduler>();
    Recorder direct, flat;
    auto a = direct.subscribe(Just(1).receiveOn(queue));
    auto b = flat.subscribe(Just(2).flatMap([queue](int v) { return Just(v * 10).receiveOn(queue); }));
    EXPECT_TRUE(direct.events.empty() && flat.events.empty());
    EXPECT_EQ(queue->runPending(), 4);
    EXPECT_EQ(direct.events, (Events{"value:1", "finished"}));
    EXPECT_EQ(flat.events, (Events{"value:20", "finished"}));
}

TEST(Publisher, DroppingTheCancellableStopsDelivery) {
    auto queue = std::make_shared<ManualScheduler>();
    Recorder r;
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
    Recorder early, late;
    auto a = early.subscribe(f);
    EXPECT_TRUE(early.events.empty());
    promise->succeed(5);
    promise->fail(boom); // a second fulfilment is ignored
    auto b = late.subscribe(f);
    EXPECT_EQ(early.events, (Events{"value:5", "finished"}));
    EXPECT_EQ(late.events, early.events);
    EXPECT_EQ(runs, 1);
}

TEST(CancellationToken, ActionsRunOnceWhetherRegisteredBeforeOrAfterTheCancel) {
    CancellationToken token;
    int before = 0, after = 0;
    token.onCancel([&] { ++before; });
    EXPECT_EQ(before, 0);
    token.cancel();
    token.cancel();
    EXPECT_EQ(before, 1);
    EXPECT_TRUE(token.isCancelled());
    token.onCancel([&] { ++after; }); // too late to wait for a cancel: runs at once
    EXPECT_EQ(after, 1);
    token.cancel();
    EXPECT_EQ(before + after, 2);
}

// Reading the side a result does not hold is a broken contract, not an expected failure:
// the test build keeps assertions on, so it must stop the process.
TEST(ResultDeathTest, ReadingTheMissingSideIsFatal) {
    const Result<int> failed(Error("Test", 1, "no value"));
    const Result<int> succeeded(3);
    EXPECT_DEATH((void)failed.value(), "ok\\(\\)");
    EXPECT_DEATH((void)succeeded.error(), "!ok\\(\\)");
    EXPECT_EQ(succeeded.value(), 3);
    EXPECT_EQ(failed.error().code(), 1);
}
