// HttpClient against a hostile loopback server: a body that is cut, undecodable, larger
// than allowed, too slow or endless must fail as a transfer error and leave no file; an
// error status is still a completed transfer. (A body with neither a length nor chunks ends
// where the connection closes, however it closes: HTTP gives no way to tell a cut there.)
#include "support/ClientDownload.h"
#include "support/HttpBodies.h"
#include "support/TestHttpServer.h"

#include <QDir>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <optional>

using namespace orvanta;
using namespace orvanta::testing;
using namespace std::chrono_literals;

namespace {

class HttpClientTest : public ::testing::Test {
protected:
    // Downloads `path` from the server with `limits` (null: the process's default limits).
    ClientDownload download(const std::string& path,
                            const std::optional<net::TransferLimits>& limits = net::TransferLimits{.idleTimeout = 10s}) {
        net::HttpClient client(limits);
        return ClientDownload::of(client, server_.url(path), dir_.path());
    }
    QStringList filesLeft() const { return QDir(dir_.path()).entryList(QDir::Files | QDir::Hidden); }

    QTemporaryDir dir_;
    TestHttpServer server_;
};

QByteArray pattern(qsizetype size) {
    QByteArray bytes(size, '\0');
    for (qsizetype i = 0; i < size; ++i) bytes[i] = static_cast<char>('a' + i % 23);
    return bytes;
}

// Bytes gzip cannot shrink: compressed, they outgrow themselves.
QByteArray noise(qsizetype size) {
    QByteArray bytes(size, '\0');
    QRandomGenerator(7).fillRange(reinterpret_cast<quint32*>(bytes.data()), size / 4);
    return bytes;
}

// A failure in the "URLError" domain with `code`, delivered on the client's thread.
void expectTransferError(const ClientDownload& delivery, int code) {
    if (!delivery.error) {
        ADD_FAILURE() << "completed with " << delivery.file->size << " bytes";
        return;
    }
    EXPECT_EQ(delivery.error->domain(), "URLError");
    EXPECT_EQ(delivery.error->code(), code) << delivery.error->localizedDescription();
    EXPECT_TRUE(delivery.onWorker);
}

} // namespace

TEST_F(HttpClientTest, ErrorStatusesAreCompletedTransfersWithTheirBody) {
    for (const int status : {400, 401, 403, 404, 409, 418, 451, 500, 502, 503}) {
        SCOPED_TRACE(status);
        server_.route("/page", {.status = status, .body = "<html>status page</html>"});
        const ClientDownload delivery = download("/page");
        ASSERT_TRUE(delivery.file.has_value()) << delivery.error->description();
        EXPECT_EQ(delivery.file->statusCode, status);
        EXPECT_EQ(delivery.body(), "<html>status page</html>");
    }
}

TEST_F(HttpClientTest, WellFramedBodiesArriveWhole) {
    const QByteArray body = pattern(300 * 1024);
    const std::pair<const char*, Route> cases[] = {
        {"length", {.body = body}},
        {"chunked", {.body = chunked(body), .headers = {"Transfer-Encoding: chunked"}, .length = Route::Length::none}},
        {"gzip", {.body = gzip(body), .headers = {"Content-Encoding: gzip"}}},
        {"until close", {.body = body, .length = Route::Length::none}},
    };
    for (const auto& [name, route] : cases) {
        SCOPED_TRACE(name);
        server_.route("/body", route);
        const ClientDownload delivery = download("/body");
        ASSERT_TRUE(delivery.file.has_value()) << delivery.error->description();
        EXPECT_EQ(delivery.body(), body);
        EXPECT_EQ(delivery.file->size, body.size());
    }
}

TEST_F(HttpClientTest, BrokenBodiesFailAsTransferErrorsAndLeaveNoFile) {
    const QByteArray body = pattern(512 * 1024);
    const QByteArray packed = gzip(pattern(4 << 20));
    const std::vector<QByteArray> gzipped{"Content-Encoding: gzip"};
    const struct {
        const char* name;
        Route route;
        int code;
    } cases[] = {
        {"cut with length", {.body = body, .cutAfter = body.size() / 2}, -1005},
        {"gzip stream cut, framing whole", {.body = packed.left(packed.size() / 2), .headers = gzipped}, -1015},
        {"gzip cut with length", {.body = packed, .headers = gzipped, .cutAfter = packed.size() / 2}, -1005},
        {"gzip that is not gzip", {.body = body, .headers = gzipped}, -1015},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        server_.route("/broken", c.route);
        expectTransferError(download("/broken"), c.code);
        EXPECT_TRUE(filesLeft().isEmpty()) << filesLeft().join(", ").toStdString();
    }
}

TEST_F(HttpClientTest, LimitsEndOversizedSlowAndEndlessAnswers) {
    const struct {
        const char* name;
        Route route;
        net::TransferLimits limits;
        int code;
    } cases[] = {
        // A drip that would take minutes: the declared length alone must end it.
        {"declared length over the maximum",
         {.body = pattern(1024), .length = Route::Length::declared, .declaredLength = qint64(2) << 30, .dripIntervalMs = 50},
         {.idleTimeout = 10s, .maximumBodySize = 1 << 20}, -1103},
        {"received bytes over the maximum", {.body = pattern(3 << 20), .length = Route::Length::none},
         {.idleTimeout = 10s, .maximumBodySize = 1 << 20}, -1103},
        {"compressed bytes over the maximum, decoded within it", {.body = gzip(noise(1 << 20)), .headers = {"Content-Encoding: gzip"}, .length = Route::Length::none},
         {.idleTimeout = 10s, .maximumBodySize = 1 << 20}, -1103},
        {"gzip bomb", {.body = gzip(QByteArray(64 << 20, '\0')), .headers = {"Content-Encoding: gzip"}},
         {.idleTimeout = 10s, .maximumBodySize = 16 << 20}, -1103},
        {"drip feed past the deadline", {.body = pattern(1024), .dripIntervalMs = 20}, {.idleTimeout = 10s, .deadline = 300ms}, -1001},
        // Header bytes are no progress, so a head that never ends runs into the idle time-out.
        {"endless header lines", {.flood = Route::Flood::headerLines}, {.idleTimeout = 1s}, -1001},
        {"one endless header line", {.flood = Route::Flood::oneLine}, {.idleTimeout = 1s}, -1001},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = std::string("/limit-") + std::to_string(&c - cases);
        server_.route(path, c.route);
        expectTransferError(download(path, c.limits), c.code);
        EXPECT_TRUE(filesLeft().isEmpty());
        EXPECT_LT(server_.bytesSent(path), TestHttpServer::floodLimit);
    }
}

TEST_F(HttpClientTest, RedirectsAreFollowedOnlyToHttpAndNotForever) {
    TestHttpServer other;
    other.route("/moved.glb", {.body = "moved"});
    server_.route("/to-other-port", {.redirectTo = other.url("/moved.glb")});
    server_.route("/loop", {.redirectTo = server_.url("/loop")});
    server_.route("/to-file", {.redirectTo = "file:///etc/passwd"});
    {
        const ClientDownload moved = download("/to-other-port"); // its file goes with it
        ASSERT_TRUE(moved.file.has_value());
        EXPECT_EQ(moved.body(), "moved");
    }
    expectTransferError(download("/loop"), -1007);
    const ClientDownload file = download("/to-file");
    if (file.file) ADD_FAILURE() << "served " << file.body().left(40).toStdString();
    expectTransferError(file, -1002);
    EXPECT_TRUE(filesLeft().isEmpty());
}

TEST_F(HttpClientTest, AClientWithoutLimitsOfItsOwnFollowsTheProcessDefaults) {
    server_.route("/four-kib", {.body = pattern(4096)});
    const DownloadLimits original = DownloadLimits::defaults();
    DownloadLimits::setDefaults({.maximumBodySize = 1024});
    const ClientDownload capped = download("/four-kib", std::nullopt);
    DownloadLimits::setDefaults(original);
    expectTransferError(capped, -1103);
    EXPECT_TRUE(download("/four-kib", std::nullopt).file.has_value());
}
