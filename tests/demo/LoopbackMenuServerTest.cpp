// The demo's loopback server as the kit meets it: files reach the kit's HTTP client byte for
// byte with their length and type, slow mode still delivers whole files, and the failing
// file makes the client report a lost connection.
#include "LoopbackMenuServer.h"
#include "support/ClientDownload.h"
#include "support/EventLoopWait.h"
#include "support/TestModels.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTemporaryDir>
#include <gtest/gtest.h>


using namespace orvanta;
using namespace orvanta::demo;
using namespace orvanta::testing;
using namespace std::chrono_literals;

namespace {

QByteArray pattern(qsizetype size, char seed) {
    QByteArray bytes(size, '\0');
    for (qsizetype i = 0; i < size; ++i) bytes[i] = char(seed + i * 7 % 251);
    return bytes;
}

class LoopbackMenuServerTest : public ::testing::Test {
protected:
    void SetUp() override {
        const auto started = server_.start();
        ASSERT_TRUE(started.ok()) << started.error().localizedDescription();
    }

    void put(const QString& name, const QByteArray& bytes) { TestModels::write(folder_.filePath(name).toStdString(), bytes); }
    std::string url(const QString& name) const { return (server_.baseUrl() + '/' + name).toStdString(); }

    ClientDownload download(const QString& name) { return ClientDownload::of(client_, url(name), downloads_.path()); }

    QTemporaryDir folder_, downloads_;
    LoopbackMenuServer server_{folder_.path()};
    net::HttpClient client_{net::TransferLimits{.idleTimeout = 30s}};
};

} // namespace

TEST_F(LoopbackMenuServerTest, ServesFilesByteForByteWithTheirLengthAndType) {
    struct Case {
        QString name;
        QByteArray contentType;
        qsizetype size;
    };
    const Case cases[] = {{"dish.usdz", "model/vnd.usdz+zip", 700 * 1024},
                          {"dish.glb", "model/gltf-binary", 90 * 1024},
                          {"dish.png", "image/png", 3000},
                          {"empty.bin", "application/octet-stream", 0}};
    QNetworkAccessManager headers;
    server_.setSlow(true); // models come in paced pieces, still whole
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name.toStdString());
        const QByteArray bytes = pattern(c.size, char(c.size));
        put(c.name, bytes);
        const ClientDownload got = download(c.name);
        ASSERT_TRUE(got.file.has_value()) << got.error->description();
        EXPECT_EQ(got.status(), 200);
        EXPECT_EQ(got.body(), bytes);

        std::unique_ptr<QNetworkReply> reply(headers.get(QNetworkRequest(QUrl(QString::fromStdString(url(c.name))))));
        ASSERT_TRUE(EventLoopWait::until([&] { return reply->isFinished(); }));
        EXPECT_EQ(reply->header(QNetworkRequest::ContentTypeHeader).toByteArray(), c.contentType);
        EXPECT_EQ(reply->header(QNetworkRequest::ContentLengthHeader).toLongLong(), c.size);
    }
}

TEST_F(LoopbackMenuServerTest, OnlyTheFolderAndTheFilesAddedByNameAreServed) {
    put("dish.glb", "glb");
    QTemporaryDir elsewhere;
    TestModels::write(elsewhere.filePath("soup v2.usdz").toStdString(), "usdz");
    server_.addFile("soup v2.usdz", elsewhere.filePath("soup v2.usdz"));
    for (const QString name : {"missing.glb", "..%2Fsecret", "%2Fetc%2Fpasswd", ".hidden", ""}) {
        SCOPED_TRACE(name.toStdString());
        const ClientDownload got = download(name);
        EXPECT_EQ(got.status(), 404);
    }
    const ClientDownload got = download("soup%20v2.usdz");
    ASSERT_TRUE(got.file.has_value()) << got.error->description();
    EXPECT_EQ(got.body(), "usdz");
}

TEST_F(LoopbackMenuServerTest, TheFailingModelIsALostConnection) {
    put("good.glb", TestModels::glbWithNodes(2));
    put("bad.glb", TestModels::glbWithNodes(40));
    server_.setFailing("bad.glb");
    const ClientDownload cut = download("bad.glb");
    ASSERT_TRUE(cut.error.has_value()) << "the cut body arrived";
    EXPECT_EQ(cut.error->domain(), "URLError");
    EXPECT_EQ(cut.error->code(), -1005) << cut.error->localizedDescription();
    EXPECT_TRUE(download("good.glb").file.has_value());
}
