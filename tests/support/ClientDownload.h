#pragma once
// One download through the kit's HTTP client, waited for (a minute at most) with the calling
// thread's event loop turning, so that a server living on this thread answers too.

#include "net/HttpClient.h"
#include "support/EventLoopWait.h"

#include <QFile>
#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <optional>

namespace orvanta::testing {

struct ClientDownload {
    std::optional<net::DownloadedFile> file;
    std::optional<core::Error> error;
    bool onWorker = false; // the outcome came on the client's own thread

    int status() const { return file ? file->statusCode : 0; }
    // The downloaded file's bytes; empty when there is none.
    QByteArray body() const {
        QFile f(file ? QString::fromStdString(file->path()) : QString());
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }

    static ClientDownload of(net::HttpClient& client, const std::string& url, const QString& folder) {
        ClientDownload result;
        std::mutex mutex;
        std::atomic<bool> done{false};
        const auto queue = client.queue();
        auto subscription = client.download(*core::Url::fromString(url), folder.toStdString())
                                .sink(
                                    [&](const core::Completion& c) {
                                        std::lock_guard lock(mutex);
                                        result.error = c.failure;
                                        result.onWorker = queue->isCurrent();
                                        done = true;
                                    },
                                    [&](net::DownloadedFile file) {
                                        std::lock_guard lock(mutex);
                                        result.file = std::move(file);
                                    });
        EXPECT_TRUE(EventLoopWait::until([&] { return done.load(); })) << url << " never finished";
        std::lock_guard lock(mutex);
        return result;
    }
};

} // namespace orvanta::testing
