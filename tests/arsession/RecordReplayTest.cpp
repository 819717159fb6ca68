// A recorded session replays as the same frames; malformed recordings are errors.
#include "SessionTestSupport.h"

#include "arsession/FrameRecord.h"
#include "arsession/ReplayBackend.h"
#include "arsession/SessionRecorder.h"
#include "support/TestModels.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace orvanta::arsession {
namespace {

using testing::ClockedSession;

std::vector<ARFrame> collect(ARSession& session, core::ManualScheduler& clock, double seconds) {
    std::vector<ARFrame> frames;
    auto observation = session.observeFrames([&](const ARFrame& f) { frames.push_back(f); });
    clock.advance(seconds);
    return frames;
}

TEST(RecordReplayTest, ReplayGivesTheRecordedFrames) {
    QTemporaryDir dir;
    const QString path = dir.filePath("session.jsonl");
    ClockedSession recorded;
    auto made = SessionRecorder::make(*recorded.session, path);
    ASSERT_TRUE(std::holds_alternative<std::unique_ptr<SessionRecorder>>(made));
    auto recorder = std::move(std::get<std::unique_ptr<SessionRecorder>>(made));
    recorded.session->run(ClockedSession::horizontalPlanes());
    const auto original = collect(*recorded.session, *recorded.clock, 4.0);
    recorder->stop();
    ASSERT_EQ(recorder->framesWritten(), int(original.size()));
    ASSERT_EQ(original.back().anchors.size(), 2u);

    auto loaded = ReplayBackend::load(path);
    ASSERT_TRUE(std::holds_alternative<std::unique_ptr<ReplayBackend>>(loaded));
    ClockedSession replay(std::move(std::get<std::unique_ptr<ReplayBackend>>(loaded)));
    replay.session->run(ClockedSession::horizontalPlanes());
    EXPECT_EQ(collect(*replay.session, *replay.clock, 5.0), original);
    EXPECT_EQ(replay.delegate->events, recorded.delegate->events);

    // Ray casts answer from the replayed planes.
    const auto hits = replay.session->raycast(ARRaycastQuery(QVector3D(0, 2, -0.6f), QVector3D(0, -1, 0),
                                                    ARRaycastQuery::Target::existingPlaneGeometry,
                                                    ARRaycastQuery::TargetAlignment::horizontal));
    ASSERT_EQ(hits.size(), 2u);
    EXPECT_EQ(hits[0].anchor->classification, ARPlaneAnchor::Classification::table);
}

TEST(RecordReplayTest, MalformedRecordsAreErrors) {
    ARFrame frame;
    frame.timestamp = 1.5;
    const QByteArray good = FrameRecord::encode(frame);
    EXPECT_TRUE(std::holds_alternative<ARFrame>(FrameRecord::decode(good)));
    EXPECT_FALSE(good.contains("intrinsics")); // a frame without a camera image has no lens

    ARFrame cameraFrame = frame;
    cameraFrame.camera.intrinsics = {912.5f, 910.25f, 641.75f, 355.5f};
    cameraFrame.camera.imageResolution = QSize(1280, 720);
    const auto lens = FrameRecord::decode(FrameRecord::encode(cameraFrame));
    ASSERT_TRUE(std::holds_alternative<ARFrame>(lens));
    EXPECT_EQ(std::get<ARFrame>(lens), cameraFrame);

    QByteArray badTracking = good;
    badTracking.replace("notAvailable", "sideways");
    const auto decoded = FrameRecord::decode(badTracking);
    ASSERT_TRUE(std::holds_alternative<core::Error>(decoded));
    EXPECT_EQ(std::get<core::Error>(decoded).localizedDescription(),
              "Malformed frame record: unknown tracking state \"sideways\"");
    EXPECT_TRUE(std::holds_alternative<core::Error>(FrameRecord::decode("[1, 2]")));
    EXPECT_TRUE(std::holds_alternative<core::Error>(FrameRecord::decode("{\"t\": 1}")));

    QTemporaryDir dir;
    orvanta::testing::TestModels::write(dir.filePath("broken.jsonl").toStdString(), good + "\n{not json\n");
    EXPECT_TRUE(std::holds_alternative<core::Error>(ReplayBackend::load(dir.filePath("broken.jsonl"))));
    EXPECT_TRUE(std::holds_alternative<core::Error>(ReplayBackend::load(dir.filePath("missing.jsonl"))));
}

} // namespace
} // namespace orvanta::arsession
