// The simulated world seen through a session: tracking progression, plane discovery and
// growth, and the three ray-cast targets with their alignment filter.
#include "SessionTestSupport.h"

#include "arsession/PlaneRaycast.h"

#include <gtest/gtest.h>

namespace orvanta::arsession {
namespace {

using testing::ClockedSession;
using Target = ARRaycastQuery::Target;
using Alignment = ARRaycastQuery::TargetAlignment;

// Straight down through the middle of the table (table top at 0.75 m, floor at 0).
ARRaycastQuery downAt(float x, float z, Target target, Alignment alignment = Alignment::any) {
    return ARRaycastQuery(QVector3D(x, 2.0f, z), QVector3D(0, -1, 0), target, alignment);
}

TEST(SimulatedWorldTest, PlanesAppearAfterTheirDelayAndGrowToFullSizeAndTheWallOnlyWhenAskedFor) {
    ClockedSession s;
    s.session->run(ClockedSession::horizontalPlanes());
    s.clock->advance(1.65); // tracking normal at 1.2 s; the table shows 0.5 s later
    EXPECT_TRUE(s.session->currentFrame()->anchors.empty());
    s.clock->advance(0.1);
    const auto& first = s.session->currentFrame()->anchors;
    ASSERT_EQ(first.size(), 1u);
    EXPECT_EQ(first[0].classification, ARPlaneAnchor::Classification::table);
    EXPECT_LT(first[0].extent.x(), 0.2f);
    const QUuid table = first[0].identifier;

    s.clock->advance(3.0);
    const ARFrame& later = *s.session->currentFrame();
    const ARPlaneAnchor* grown = later.anchor(table);
    ASSERT_NE(grown, nullptr);
    EXPECT_FLOAT_EQ(grown->extent.x(), 1.2f);
    EXPECT_FLOAT_EQ(grown->extent.z(), 0.8f);
    EXPECT_NEAR(grown->worldCenter().y(), 0.75f, 1e-6f);
    // The floor came too; the wall is vertical and not asked for.
    EXPECT_EQ(later.anchors.size(), 2u);
    EXPECT_EQ((std::vector<std::string>(s.delegate->events.end() - 2, s.delegate->events.end())),
              (std::vector<std::string>{"add table", "add floor"}));

    // Asked for, the wall is found, its anchor's y axis the wall's normal facing into the room.
    ARWorldTrackingConfiguration both = ClockedSession::horizontalPlanes();
    both.planeDetection |= ARWorldTrackingConfiguration::vertical;
    s.session->run(both);
    s.clock->advance(6.0);
    ASSERT_EQ(s.session->currentFrame()->anchors.size(), 3u);
    const ARPlaneAnchor& wall = s.session->currentFrame()->anchors[2];
    EXPECT_EQ(wall.alignment, ARPlaneAnchor::Alignment::vertical);
    EXPECT_TRUE(qFuzzyCompare(wall.transform.mapVector(QVector3D(0, 1, 0)), QVector3D(0, 0, 1)));
}

TEST(SimulatedWorldTest, EstimatedPlanesAreHitBeforeAnyAnchorButNotWithoutTrackingAndOnlyWithTheirAlignment) {
    ClockedSession s;
    s.session->run(ClockedSession::horizontalPlanes());
    s.clock->advance(0.1); // not available
    EXPECT_TRUE(s.session->raycast(downAt(0, -0.6f, Target::estimatedPlane)).empty());

    s.clock->advance(1.3); // normal, no plane yet
    ASSERT_TRUE(s.session->currentFrame()->anchors.empty());
    const auto hits = s.session->raycast(downAt(0, -0.6f, Target::estimatedPlane));
    ASSERT_EQ(hits.size(), 2u); // table top, then the floor beneath it
    EXPECT_EQ(hits[0].target, Target::estimatedPlane);
    EXPECT_FALSE(hits[0].anchor.has_value());
    EXPECT_TRUE(qFuzzyCompare(hits[0].position(), QVector3D(0, 0.75f, -0.6f)));
    EXPECT_NEAR(hits[0].distance, 1.25f, 1e-5f);
    EXPECT_NEAR(hits[1].position().y(), 0.0f, 1e-6f);
    EXPECT_TRUE(s.session->raycast(downAt(0, -0.6f, Target::existingPlaneGeometry)).empty());
    // A ray from above the table that points up hits nothing behind its origin.
    ARRaycastQuery up = downAt(0, -0.6f, Target::estimatedPlane);
    up.direction = -up.direction;
    EXPECT_TRUE(s.session->raycast(up).empty());

    // The alignment filter: level with the table top, looking at the wall, a ray only meets vertical surfaces.
    const ARRaycastQuery ahead(QVector3D(0, 1.5f, 0), QVector3D(0, 0, -1), Target::estimatedPlane, Alignment::any);
    const auto any = s.session->raycast(ahead);
    ASSERT_EQ(any.size(), 1u);
    EXPECT_EQ(any[0].targetAlignment, Alignment::vertical);
    EXPECT_NEAR(any[0].distance, 2.0f, 1e-5f);
    EXPECT_TRUE(s.session->raycast(ARRaycastQuery(ahead.origin, ahead.direction, Target::estimatedPlane, Alignment::horizontal)).empty());
    EXPECT_TRUE(s.session->raycast(downAt(0, -0.6f, Target::estimatedPlane, Alignment::vertical)).empty());
}

TEST(SimulatedWorldTest, ExistingGeometryIsBoundedAndInfiniteIsNot) {
    ClockedSession s;
    s.session->run(ClockedSession::horizontalPlanes());
    s.clock->advance(1.8); // table seen, still small (about 0.16 m × 0.13 m)
    ASSERT_EQ(s.session->currentFrame()->anchors.size(), 1u);

    // 0.3 m off the table's centre: outside the detected area, on its infinite plane.
    EXPECT_TRUE(s.session->raycast(downAt(0.3f, -0.6f, Target::existingPlaneGeometry)).empty());
    const auto infinite = s.session->raycast(downAt(0.3f, -0.6f, Target::existingPlaneInfinite));
    ASSERT_EQ(infinite.size(), 1u);
    ASSERT_TRUE(infinite[0].anchor.has_value());
    EXPECT_EQ(infinite[0].anchor->classification, ARPlaneAnchor::Classification::table);
    EXPECT_EQ(infinite[0].targetAlignment, Alignment::horizontal);
}

// A plane's width bounds hits across it and its depth bounds hits along it: a narrow, deep
// plane is hit beyond its half width along its depth but not across it, and a wide, shallow
// one the other way round.
TEST(SimulatedWorldTest, ExistingGeometryBoundsWidthAndDepthEachOnItsOwnAxis) {
    ARPlaneAnchor narrowDeep;
    narrowDeep.extent = QVector3D(0.2f, 0.0f, 1.0f);
    ARPlaneAnchor wideShallow = narrowDeep;
    wideShallow.extent = QVector3D(1.0f, 0.0f, 0.2f);
    const struct {
        const ARPlaneAnchor& plane;
        float x, z;
        bool hit;
    } cases[] = {
        {narrowDeep, 0.0f, 0.4f, true},  {narrowDeep, 0.4f, 0.0f, false},
        {wideShallow, 0.4f, 0.0f, true}, {wideShallow, 0.0f, 0.4f, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.plane.extent.x() << " x " << c.plane.extent.z() << " at " << c.x << ", " << c.z);
        std::vector<ARRaycastResult> results;
        PlaneRaycast::existingPlanes(downAt(c.x, c.z, Target::existingPlaneGeometry), {c.plane}, results);
        EXPECT_EQ(results.size(), c.hit ? 1u : 0u);
    }
}

} // namespace
} // namespace orvanta::arsession
