#pragma once
// Shared set-up of the model-loading tests: a private temporary directory as the cache, a
// fresh manual main queue, a loopback HTTP server and a client.

#include "core/Dispatch.h"
#include "core/ManualScheduler.h"
#include "core/TemporaryDirectory.h"
#include "models/NetworkManager.h"
#include "support/LogCapture.h"
#include "support/ScopedTmpdir.h"
#include "support/TestHttpServer.h"
#include "support/TestModels.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <optional>

namespace orvanta::testing {

// Everything one subscription delivered, and whether it arrived on the main queue.
template <class T>
struct Outcome {
    std::optional<T> value;
    std::optional<core::Error> error;
    bool finished = false;
    bool deliveredOnMain = false;
    bool done() const { return finished || error.has_value(); }
};

template <class T>
core::Cancellable record(const core::Publisher<T>& publisher, Outcome<T>& outcome, const core::ManualScheduler& main) {
    return publisher.sink(
        [&outcome, &main](const core::Completion& c) {
            if (c.isFinished()) outcome.finished = true;
            else outcome.error = c.failure;
            outcome.deliveredOnMain = main.isCurrent();
        },
        [&outcome](T v) { outcome.value = std::move(v); });
}

class ModelsFixture : public ::testing::Test {
protected:
    void SetUp() override {
        core::Dispatch::setMain(main_);
        cacheFolder_ = QString::fromStdString(core::TemporaryDirectory::url().value().path());
    }

    std::string cachePath(const std::string& name) const {
        return QDir(cacheFolder_).filePath(QString::fromStdString(name)).toStdString();
    }
    // Every file in the cache directory, hidden ones (unfinished downloads) included.
    QStringList cacheFiles() const { return QDir(cacheFolder_).entryList(QDir::Files | QDir::Hidden); }
    void serveModel(const std::string& path, int nodeCount = 3) { server_.route(path, {.body = TestModels::glbWithNodes(nodeCount)}); }

    // Subscribes to `publisher` and drives the main queue until it has delivered.
    template <class T>
    Outcome<T> awaitOutcome(const core::Publisher<T>& publisher) {
        Outcome<T> outcome;
        auto subscription = record(publisher, outcome, *main_);
        EXPECT_TRUE(main_->runUntil([&] { return outcome.done(); }));
        return outcome;
    }

    QTemporaryDir cacheDir_;  // what TMPDIR names
    ScopedTmpdir tmpdir_{cacheDir_.path()};
    QString cacheFolder_;     // the kit's folder inside it
    std::shared_ptr<core::ManualScheduler> main_ = std::make_shared<core::ManualScheduler>();
    TestHttpServer server_;
    std::shared_ptr<NetworkManager> network_ = std::make_shared<NetworkManager>(std::make_shared<net::HttpClient>(net::TransferLimits{}));
    LogCapture log_;
};

} // namespace orvanta::testing
