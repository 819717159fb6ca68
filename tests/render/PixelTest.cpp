// What the two views put on screen, checked by regions and colours rather than whole images.
#include "ar/ARViewContainer.h"
#include "ar/ARViewContainerCoordinator.h"
#include "ar/StillCameraBackend.h"
#include "arsession/SimulatedWorld.h"
#include "focus/FocusIndicator.h"
#include "import/SceneImporter.h"
#include "models/Reality3DViewItem.h"
#include "reality/MeshResource.h"
#include "reality/ModelEntity.h"
#include "render/ARViewItem.h"
#include "render/DrawnFrames.h"
#include "render/GlSupport.h"
#include "render/ItemSnapshotRenderer.h"
#include "scenegraph/SceneNodeBuilder.h"
#include "support/Corpus.h"
#include "support/TestModels.h"

#include <QBuffer>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QQuickPaintedItem>
#include <QQuickWindow>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace orvanta;

namespace {

constexpr QSize kViewSize(640, 480);

#define SKIP_WITHOUT_GL()                                                                                             \
    if (!render::GlSupport::canCreateContext()) GTEST_SKIP() << "no pixel test: " << render::GlSupport::unavailableReason()

bool reddish(QRgb p) { return qRed(p) > 120 && qRed(p) > 2 * qGreen(p) && qRed(p) > 2 * qBlue(p); }
bool amber(QRgb p) { return qRed(p) > 230 && qGreen(p) > 150 && qBlue(p) < 60; }
bool magenta(QRgb p) { return qRed(p) > 200 && qBlue(p) > 200 && qGreen(p) < 60; }
bool greenish(QRgb p) { return qGreen(p) > 120 && qGreen(p) > 2 * qRed(p) && qGreen(p) > 2 * qBlue(p); }
bool bluish(QRgb p) { return qBlue(p) > 120 && qBlue(p) > 2 * qRed(p) && qBlue(p) > 2 * qGreen(p); }
bool woody(QRgb p) { return qRed(p) > qGreen(p) + 20 && qGreen(p) > qBlue(p) + 15 && qBlue(p) < 140; }

// A flat magenta item over part of a window, standing for a layout's controls.
class MagentaCover : public QQuickPaintedItem {
public:
    MagentaCover(QQuickItem* parent, QRectF area) : QQuickPaintedItem(parent) {
        setPosition(area.topLeft());
        setSize(area.size());
        setZ(10);
    }
    void paint(QPainter* painter) override { painter->fillRect(boundingRect(), QColor(255, 0, 255)); }
};

struct Region {
    int count = 0;
    QPointF centroid;
};

Region find(const QImage& image, const std::function<bool(QRgb)>& match, QRect area = {}) {
    if (area.isNull()) area = image.rect();
    Region region;
    double x = 0, y = 0;
    for (int row = area.top(); row <= area.bottom(); ++row)
        for (int col = area.left(); col <= area.right(); ++col)
            if (match(image.pixel(col, row))) {
                ++region.count;
                x += col;
                y += row;
            }
    if (region.count) region.centroid = QPointF(x / region.count, y / region.count);
    return region;
}

const QVector4D kRed(0.8f, 0.02f, 0.02f, 1.0f);

import::ImportedMaterial coloured(QVector4D colour) {
    import::ImportedMaterial material;
    material.baseColorFactor = colour;
    return material;
}

// A box `width` across and `height` tall resting on y = 0.
import::ImportedMesh box(float width, float height) {
    import::ImportedMesh mesh = reality::MeshResource::generateBox(width, height, width)->mesh();
    for (QVector3D& p : mesh.positions) p.setY(p.y() + height / 2);
    return mesh;
}

// A 0.3 m square upright in the x–y plane, its front face turned towards -z (its triangles
// wind clockwise seen from +z), with texture coordinates across it.
import::ImportedMesh square() {
    import::ImportedMesh mesh;
    mesh.positions = {{-0.15f, 0, 0}, {0.15f, 0, 0}, {-0.15f, 0.3f, 0}, {0.15f, 0.3f, 0}};
    mesh.normals.assign(4, QVector3D(0, 0, -1));
    mesh.texCoords = {{0, 0}, {1, 0}, {0, 1}, {1, 1}};
    mesh.indices = {0, 2, 1, 1, 2, 3};
    mesh.subsets.push_back({0, 6, 0});
    return mesh;
}

// A scene of `mesh` in `material`, `texture` (if any) as its base colour.
std::shared_ptr<import::ImportedScene> sceneOf(import::ImportedMesh mesh, const import::ImportedMaterial& material,
                                               std::optional<QImage> texture = std::nullopt) {
    auto scene = std::make_shared<import::ImportedScene>();
    mesh.subsets.front().material = 0;
    scene->meshes.push_back(std::move(mesh));
    scene->materials.push_back(material);
    if (texture) {
        QByteArray png;
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        texture->save(&buffer, "PNG");
        scene->textures.push_back({"square.png", png, nullptr});
        scene->materials[0].baseColorTexture = import::ImportedTextureRef{.texture = 0, .channel = import::TextureChannel::rgba};
    }
    scene->nodes.push_back({"", QMatrix4x4(), -1, {}, {0}});
    return scene;
}

std::shared_ptr<import::ImportedScene> redBox(float size) { return sceneOf(box(size, size / 2), coloured(kRed)); }

// Three upright quads 0.1 m across side by side, copies of one mesh that a USD point instancer
// colours red, green and blue from left to right.
std::shared_ptr<const import::ImportedScene> threeInstancedQuads() {
    QTemporaryDir folder;
    const std::string path = folder.filePath("quads.usda").toStdString();
    orvanta::testing::TestModels::write(path, R"(#usda 1.0
(metersPerUnit = 1 upAxis = "Y")
def PointInstancer "Quads" {
    rel prototypes = [</Quads/Quad>] int[] protoIndices = [0, 0, 0] point3f[] positions = [(-0.12, 0, 0), (0, 0, 0), (0.12, 0, 0)]
    color3f[] primvars:displayColor = [(0.9, 0.02, 0.02), (0.02, 0.8, 0.02), (0.02, 0.02, 0.9)]
    def Mesh "Quad" {
        int[] faceVertexCounts = [4] int[] faceVertexIndices = [0, 1, 2, 3] uniform bool doubleSided = 1
        point3f[] points = [(-0.05, 0, 0), (0.05, 0, 0), (0.05, 0.1, 0), (-0.05, 0.1, 0)]
    }
}
)");
    auto imported = import::SceneImporter::importFile(path);
    EXPECT_TRUE(imported);
    return std::make_shared<const import::ImportedScene>(imported ? std::move(imported).value() : import::ImportedScene{});
}

// What `item` draws, once `ready` holds in its window.
QImage drawn(QQuickItem* item, const std::function<bool()>& ready) {
    EXPECT_TRUE(render::DrawnFrames::waitUntil(*item->window(), ready, 30.0));
    return render::ItemSnapshotRenderer(item).grab(false).value_or(QImage()).convertToFormat(QImage::Format_RGB32);
}

// A window showing the 3D viewer with `scene`; the picture once it is on screen.
struct ThreeDWindow {
    QQuickWindow window;
    Reality3DViewItem* item = new Reality3DViewItem(window.contentItem());
    Binding<bool> loaded = Binding<bool>::cell(false);

    explicit ThreeDWindow(const std::shared_ptr<const import::ImportedScene>& scene) {
        window.resize(kViewSize);
        item->setSize(kViewSize);
        window.show();
        item->setViewer(Reality3DView(
            Binding<Reality3DView::SceneNodePtr>::cell(scenegraph::SceneNodeBuilder::build(scene).rootNode), loaded));
    }
    QImage picture() { return drawn(item, [&] { return loaded.get() && item->textures().pendingDecodes() == 0; }); }
};

// A simulated room that finds its table at once.
ARViewContainer::BackendFactory quickRoom(float sway, double initializing = 0.05) {
    return [sway, initializing] {
        arsession::SimulatedWorld::Script script;
        script.notAvailableFor = 0.0;
        script.initializingFor = initializing;
        script.planeGrowthDuration = 0.1;
        script.swayAmplitude = sway;
        return std::make_unique<arsession::SimulatedWorld>(script);
    };
}

// An AR window whose session comes from `backend`.
struct ARWindow {
    QQuickWindow window;
    render::ARViewItem* item = new render::ARViewItem(window.contentItem());
    Binding<std::shared_ptr<reality::ModelEntity>> model = Binding<std::shared_ptr<reality::ModelEntity>>::cell(nullptr);
    Binding<bool> loaded = Binding<bool>::cell(false);
    ARViewContainer container;
    std::shared_ptr<ARViewContainer::Coordinator> coordinator;
    std::shared_ptr<reality::ARView> view;

    explicit ARWindow(ARViewContainer::BackendFactory backend, QSize size = kViewSize)
        : container(model, loaded, Binding<std::shared_ptr<reality::ARView>>::cell(nullptr),
                    Binding<std::optional<TrackingStateEnum>>::cell(std::nullopt), std::move(backend)) {
        window.resize(size);
        item->setSize(size);
        window.show();
        coordinator = container.makeCoordinator();
        view = container.makeUIView({coordinator});
        item->setARView(view);
        item->setCoachingOverlay(coordinator->coachingOverlay);
    }
    // Hands `entity` to the container as the screen does; the picture once it stands on the table.
    QImage place(const std::shared_ptr<reality::ModelEntity>& entity) {
        model.set(entity);
        container.updateUIView(view, {coordinator});
        return pictureWhen([&] { return loaded.get() && entity->isActive(); });
    }
    QImage pictureWhen(const std::function<bool()>& ready) { return drawn(item, ready); }
    // Where the anchor of the placed model shows on screen now.
    QPointF anchorOnScreen() const {
        const auto anchor = model.get()->parent();
        return *view->session()->currentFrame()->camera.projectPoint(anchor->position(nullptr), item->size());
    }
};

} // namespace

TEST(ThreeDViewerPixels, AModelShowsCentredAndFramedAlikeInCentimetresAndMetres) {
    SKIP_WITHOUT_GL();
    ThreeDWindow metres(redBox(0.3f)), centimetres(redBox(30.0f));
    const QImage inMetres = metres.picture();
    const Region a = find(inMetres, reddish), b = find(centimetres.picture(), reddish);
    ASSERT_GT(a.count, kViewSize.width() * kViewSize.height() / 20) << "the model is missing or tiny";
    EXPECT_LT(a.count, kViewSize.width() * kViewSize.height() * 3 / 4) << "the model overflows the view";
    EXPECT_NEAR(a.centroid.x(), kViewSize.width() / 2.0, kViewSize.width() / 40.0);
    EXPECT_NEAR(a.centroid.y(), kViewSize.height() / 2.0, kViewSize.height() / 10.0);
    EXPECT_NEAR(double(b.count) / a.count, 1.0, 0.05);
    EXPECT_NEAR(a.centroid.x(), b.centroid.x(), 2.0);
    // The corners show the plain light background.
    EXPECT_GT(qGray(inMetres.pixel(2, 2)), 225);
}

TEST(ThreeDViewerPixels, InstancesShowAtTheirPlacesInTheirColoursInBothViews) {
    SKIP_WITHOUT_GL();
    const auto scene = threeInstancedQuads();
    const std::function<bool(QRgb)> colours[] = {reddish, greenish, bluish};
    ThreeDWindow viewer(scene);
    const QImage picture = viewer.picture();
    ARWindow ar(quickRoom(0.0f));
    const QImage placed = ar.place(reality::ModelEntity::fromImportedScene(scene));
    // Every copy in its own colour, the first one too, left to right in the viewer.
    double left = 0;
    for (int copy = 0; copy < 3; ++copy) {
        SCOPED_TRACE(copy);
        const Region shown = find(picture, colours[copy]);
        EXPECT_GT(shown.count, 500);
        EXPECT_GT(shown.centroid.x(), left);
        left = shown.centroid.x();
        EXPECT_GT(find(placed, colours[copy]).count, 50);
    }
    // The view frames all three copies: the middle one shows at the middle.
    EXPECT_NEAR(find(picture, greenish).centroid.x(), kViewSize.width() / 2.0, kViewSize.width() / 20.0);
}

// Materials and meshes whose colour comes from elsewhere than the base colour: each shows over
// a twentieth of the view in the colour it says.
TEST(ThreeDViewerPixels, EmissiveTransparentVertexColouredAndTexturedModelsShowTheirColours) {
    SKIP_WITHOUT_GL();
    const auto expectShows = [](std::shared_ptr<const import::ImportedScene> scene, const std::function<bool(QRgb)>& colour) {
        ThreeDWindow viewer(std::move(scene));
        EXPECT_GT(find(viewer.picture(), colour).count, kViewSize.width() * kViewSize.height() / 20);
    };
    // Black by its base colour, yet bright green everywhere it shows, shade or not.
    import::ImportedMaterial glowing = coloured(QVector4D(0, 0, 0, 1));
    glowing.emissiveFactor = QVector3D(0, 1, 0);
    expectShows(sceneOf(box(0.3f, 0.15f), glowing), [](QRgb p) { return qGreen(p) > 200 && qRed(p) < 80 && qBlue(p) < 80; });
    // Blue over the light background: neither the background nor an opaque blue.
    import::ImportedMaterial glass = coloured(QVector4D(0, 0, 1, 1));
    glass.opacity = 0.35f;
    glass.alphaMode = import::AlphaMode::blend;
    expectShows(sceneOf(box(0.3f, 0.15f), glass), [](QRgb p) { return qBlue(p) > qRed(p) + 15 && qRed(p) > 90 && qRed(p) < 235; });
    // Green vertex colours on a white material.
    import::ImportedMesh tinted = box(0.3f, 0.15f);
    tinted.colors.assign(tinted.positions.size(), QVector4D(0.05f, 0.6f, 0.05f, 1.0f));
    expectShows(sceneOf(tinted, {}), [](QRgb p) { return qGreen(p) > qRed(p) + 60 && qGreen(p) > qBlue(p) + 60; });
    // The duck's texture is yellow with an orange beak: untextured it would be white.
    ORVANTA_CORPUS_FILE(duck, "glb/Duck.glb");
    auto imported = import::SceneImporter::importFile(duck.string());
    ASSERT_TRUE(imported);
    expectShows(std::make_shared<const import::ImportedScene>(std::move(imported).value()),
                [](QRgb p) { return qRed(p) > 180 && qGreen(p) > 150 && qBlue(p) < 90; });
}

// Which faces a material draws: a square seen from behind shows only when its material is
// double-sided; a masked texture cuts its transparent half out instead of drawing it.
TEST(ThreeDViewerPixels, DoubleSidedAndMaskedMaterialsDrawWhatTheySay) {
    SKIP_WITHOUT_GL();
    import::ImportedMaterial twoSided = coloured(kRed);
    twoSided.doubleSided = true;
    const int area = kViewSize.width() * kViewSize.height();
    ThreeDWindow back(sceneOf(square(), coloured(kRed))), both(sceneOf(square(), twoSided));
    EXPECT_LT(find(back.picture(), reddish).count, area / 200) << "a one-sided square is drawn from behind";
    const int whole = find(both.picture(), reddish).count;
    EXPECT_GT(whole, area / 20) << "a double-sided square is culled from behind";

    // Left half transparent, right half opaque white, under the red base colour.
    QImage halves(64, 8, QImage::Format_RGBA8888);
    halves.fill(Qt::white);
    for (int y = 0; y < halves.height(); ++y)
        for (int x = 0; x < halves.width() / 2; ++x) halves.setPixelColor(x, y, QColor(255, 255, 255, 0));
    import::ImportedMaterial masked = twoSided;
    masked.alphaMode = import::AlphaMode::mask;
    masked.alphaCutoff = 0.5f;
    ThreeDWindow cut(sceneOf(square(), masked, halves));
    const QImage picture = cut.picture();
    const Region kept = find(picture, reddish);
    EXPECT_NEAR(double(kept.count) / whole, 0.5, 0.12) << "the mask's cut-out half is drawn";
    // The cut-out half shows the light background where the square's other half would be.
    const QPointF mirrored(kViewSize.width() - kept.centroid.x(), kept.centroid.y());
    EXPECT_GT(qGray(picture.pixel(mirrored.toPoint())), 225);
}

TEST(ARViewPixels, TheSquareThenThePlacedDishStayOnTheTableWhileTheCameraSways) {
    SKIP_WITHOUT_GL();
    ARWindow ar(quickRoom(0.02f));
    // Before placement: the table fills the lower middle and the amber square lies near the centre.
    const QImage searching = ar.pictureWhen([&] {
        const auto indicator = ar.coordinator->focusIndicator;
        return indicator && indicator->onPlane() && !indicator->isOpen();
    });
    EXPECT_GT(find(searching, woody).count, kViewSize.width() * kViewSize.height() / 10) << "no table";
    const QRect centre(kViewSize.width() / 4, kViewSize.height() / 4, kViewSize.width() / 2, kViewSize.height() / 2);
    EXPECT_GT(find(searching, amber, centre).count, 20) << "no amber focus square near the centre";

    const QImage placed = ar.place(reality::ModelEntity::fromImportedScene(redBox(0.2f)));
    EXPECT_EQ(find(placed, amber).count, 0) << "the square stays after placement";
    const Region first = find(placed, reddish);
    ASSERT_GT(first.count, 100);
    // The dish sits where its anchor projects, frame after frame, while the camera sways.
    const QPointF firstAnchor = ar.anchorOnScreen();
    EXPECT_LT(QLineF(first.centroid, firstAnchor).length(), 15.0);
    const double t0 = ar.view->session()->currentFrame()->timestamp;
    const QImage later = ar.pictureWhen([&] { return ar.view->session()->currentFrame()->timestamp > t0 + 0.7; });
    const Region second = find(later, reddish);
    const QPointF secondAnchor = ar.anchorOnScreen();
    EXPECT_LT(QLineF(second.centroid - first.centroid, secondAnchor - firstAnchor).length(), 3.0);
}

// The room fills windows of every shape, and the plane-style square fills green near the
// middle of the table.
TEST(ARViewPixels, TheRoomFillsWindowsOfEveryShapeUnderAGreenPlaneStyleSquare) {
    SKIP_WITHOUT_GL();
    for (const QSize size : {QSize(360, 640), QSize(1600, 1000)}) {
        SCOPED_TRACE(size.width());
        ARWindow ar(quickRoom(0.0f), size);
        ar.coordinator->focusIndicator->destroy();
        const auto square = focus::FocusIndicator::make(ar.view, focus::FocusIndicatorComponent::plane());
        const QImage room = ar.pictureWhen([&] { return square->onPlane(); });
        // Where the room ends the view's dark neutral clear colour shows; the room's darkest
        // parts, the table's legs in shade, are brown.
        const Region gaps = find(room, [](QRgb p) {
            return qGray(p) < 60 && std::abs(qRed(p) - qGreen(p)) < 8 && std::abs(qGreen(p) - qBlue(p)) < 8;
        });
        EXPECT_LT(gaps.count, size.width() * size.height() / 1000);
        const QRect centre(size.width() / 4, size.height() / 4, size.width() / 2, size.height() / 2);
        const Region green = find(room, [](QRgb p) { return qGreen(p) > 150 && qGreen(p) > qRed(p) + 60 && qBlue(p) < 120; }, centre);
        EXPECT_GT(green.count, 100);
        EXPECT_NEAR(green.centroid.x(), size.width() / 2.0, size.width() / 20.0);
    }
}

TEST(ARViewPixels, TheCoachingOverlayVeilsTheViewUntilThePlaneIsFound) {
    SKIP_WITHOUT_GL();
    // Long enough that the veil is still up when a loaded machine draws its first frame.
    ARWindow ar(quickRoom(0.0f, 4.0));
    const auto overlay = ar.coordinator->coachingOverlay;
    const QImage coaching = ar.pictureWhen([&] { return overlay->isActive(); });
    const Region text = find(coaching, [](QRgb p) { return qGray(p) > 235; });
    EXPECT_GT(text.count, 200) << "no guidance drawn";
    const QImage found = ar.pictureWhen([&] { return !overlay->isActive(); });
    EXPECT_EQ(find(found, [](QRgb p) { return qGray(p) > 235; }).count, 0);
    // The veil darkens the room: the table is brighter once it lifts.
    EXPECT_GT(find(found, woody).count, find(coaching, woody).count);
}

// A dish placed on a still table stands in its contact shadow, is photographed without the
// controls over the view, and moves when dragged.
TEST(ARViewPixels, APlacedDishCastsAShadowIsPhotographedAloneAndFollowsADrag) {
    SKIP_WITHOUT_GL();
    ARWindow ar(quickRoom(0.0f));
    auto dish = reality::ModelEntity::fromImportedScene(redBox(0.2f));
    const QImage picture = ar.place(dish);
    const auto& camera = ar.view->session()->currentFrame()->camera;
    // The mean grey of a 5 × 5 patch of table `x` metres beside the dish's centre.
    const auto greyBeside = [&](float x) {
        const auto at = camera.projectPoint(dish->parent()->position(nullptr) + QVector3D(x, 0, 0), QSizeF(kViewSize));
        EXPECT_TRUE(at.has_value());
        double sum = 0;
        for (int dy = -2; dy <= 2; ++dy)
            for (int dx = -2; dx <= 2; ++dx) sum += qGray(picture.pixel(at->toPoint() + QPoint(dx, dy)));
        return sum / 25;
    };
    // The dish stands 0.1 m wide on its half-size anchor; its shadow reaches 0.08 m out.
    for (const float side : {-1.0f, 1.0f}) EXPECT_LT(greyBeside(side * 0.056f), 0.85 * greyBeside(side * 0.15f)) << side;

    {
        // A control stacked over the dish: on screen, never in the photo.
        MagentaCover cover(ar.window.contentItem(), QRectF(QPointF(kViewSize.width() / 4, kViewSize.height() / 4), kViewSize / 2));
        EXPECT_GT(find(ar.window.grabWindow().convertToFormat(QImage::Format_RGB32), magenta).count, 1000);
        for (const bool hdr : {false, true}) {
            std::optional<QImage> image;
            bool delivered = false;
            ar.view->snapshot(hdr, [&](std::optional<QImage> result) {
                image = std::move(result);
                delivered = true;
            });
            EXPECT_FALSE(delivered) << "delivered before the next turn of the main queue";
            render::DrawnFrames::waitUntil(ar.window, [&] { return delivered; }, 30.0);
            ASSERT_TRUE(image);
            EXPECT_EQ(image->size(), kViewSize * image->devicePixelRatio());
            if (hdr && render::GlSupport::hasHalfFloatTargets()) {
                EXPECT_EQ(image->format(), QImage::Format_RGBA16FPx4);
            }
            const QImage rgb = image->convertToFormat(QImage::Format_RGB32);
            EXPECT_GT(find(rgb, woody).count, kViewSize.width() * kViewSize.height() / 10);
            EXPECT_GT(find(rgb, reddish).count, 100) << "the dish";
            EXPECT_EQ(find(rgb, magenta).count, 0) << "the control above the view";
        }
    }

    const QVector3D before = dish->position(nullptr);
    QPointF at = ar.anchorOnScreen() - QPointF(0, 8);
    const auto send = [&](QEvent::Type type, QPointF point, Qt::MouseButtons buttons) {
        QMouseEvent event(type, point, ar.window.mapToGlobal(point), Qt::LeftButton, buttons, Qt::NoModifier);
        QGuiApplication::sendEvent(&ar.window, &event);
    };
    send(QEvent::MouseButtonPress, at, Qt::LeftButton);
    for (int i = 0; i < 10; ++i) send(QEvent::MouseMove, at += QPointF(4, 0), Qt::LeftButton);
    send(QEvent::MouseButtonRelease, at, Qt::NoButton);
    EXPECT_GT(dish->position(nullptr).distanceToPoint(before), 0.02f);
}

namespace {

bool blue(QRgb p) { return qBlue(p) > 150 && qRed(p) < 80 && qGreen(p) < 80; }

// A camera `distance` metres from the table's centre, `elevation` above the table and turned
// `yaw` about the vertical, looking at `target`.
QMatrix4x4 orbitingCamera(float distance, float elevationDegrees, float yawDegrees, QVector3D target) {
    const float e = qDegreesToRadians(elevationDegrees), y = qDegreesToRadians(yawDegrees);
    const QVector3D eye = target + distance * QVector3D(std::cos(e) * std::sin(y), std::sin(e), std::cos(e) * std::cos(y));
    QMatrix4x4 view;
    view.lookAt(eye, target, QVector3D(0, 1, 0));
    return view.inverted();
}

// Where the camera's picture shows `world`, in its pixels (a pinhole lens, y down; (0, 0) is
// the centre of the top-left pixel).
QPointF inPicture(const QMatrix4x4& pose, const arsession::CameraIntrinsics& lens, QVector3D world) {
    const QVector3D p = pose.inverted().map(world);
    return {lens.cx + lens.fx * p.x() / -p.z(), lens.cy - lens.fy * p.y() / -p.z()};
}

QPointF polygonCentroid(const QPolygonF& polygon) {
    double area = 0, x = 0, y = 0;
    for (int i = 0; i < polygon.size(); ++i) {
        const QPointF a = polygon[i], b = polygon[(i + 1) % polygon.size()];
        const double cross = a.x() * b.y() - b.x() * a.y();
        area += cross;
        x += (a.x() + b.x()) * cross;
        y += (a.y() + b.y()) * cross;
    }
    return {x / (3 * area), y / (3 * area)};
}

// Where a view of `view` points shows the point `pixel` (measured from the top-left corner) of
// a picture of `picture` pixels aspect-filled into it.
QPointF inView(QPointF pixel, QSizeF picture, QSizeF view) {
    const double scale = std::max(view.width() / picture.width(), view.height() / picture.height());
    return {pixel.x() * scale - (picture.width() * scale - view.width()) / 2,
            pixel.y() * scale - (picture.height() * scale - view.height()) / 2};
}

} // namespace

TEST(ARViewPixels, OnACameraPictureTheDishStandsWhereThePictureShowsItsPlace) {
    SKIP_WITHOUT_GL();
    struct Case {
        const char* name;
        QSize picture;
        arsession::CameraIntrinsics lens;
        float distance, elevation, yaw;
    };
    const Case cases[] = {
        {"same size as the view, principal point off centre", {640, 480}, {560, 560, 340, 225}, 0.45f, 50, 0},
        {"wider picture, cropped at the sides", {1280, 720}, {950, 950, 610, 380}, 0.5f, 40, 30},
        {"upright picture, cropped at the top and bottom", {480, 640}, {520, 520, 250, 310}, 0.4f, 62, -60},
    };
    const QVector3D marks[] = {{0.12f, 0, 0}, {-0.1f, 0, 0.08f}};
    // A thin red plate 0.1 m across resting on the table; placed at half size, the centre of
    // its lit top stands 2 mm above the table's centre.
    const auto plateScene = sceneOf(box(0.1f, 0.004f), coloured(kRed));
    // The corners of its top, placed at half size on the table's centre.
    const QVector3D plateTop[] = {{-0.025f, 0.002f, -0.025f}, {0.025f, 0.002f, -0.025f}, {0.025f, 0.002f, 0.025f}, {-0.025f, 0.002f, 0.025f}};
    const auto litRed = [](QRgb p) { return reddish(p) && qRed(p) > 200; }; // the top, not the shaded sides

    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const QMatrix4x4 pose = orbitingCamera(c.distance, c.elevation, c.yaw, QVector3D(0.04f, 0, -0.03f));
        // A grey table with blue marks where two points of it lie.
        auto picture = std::make_shared<QImage>(c.picture, QImage::Format_RGB32);
        for (int y = 0; y < c.picture.height(); ++y)
            for (int x = 0; x < c.picture.width(); ++x)
                picture->setPixel(x, y, qRgb(110 + 40 * x / c.picture.width(), 120, 100 + 30 * y / c.picture.height()));
        // Each mark is drawn round the pixel its point falls in; `drawnAt` holds their centres.
        std::vector<QPointF> drawnAt;
        for (const QVector3D& mark : marks) {
            const QPoint at = inPicture(pose, c.lens, mark).toPoint();
            for (int dy = -4; dy <= 4; ++dy)
                for (int dx = -4; dx <= 4; ++dx)
                    if (dx * dx + dy * dy <= 16) picture->setPixel(at.x() + dx, at.y() + dy, qRgb(20, 30, 220));
            drawnAt.push_back(QPointF(at) + QPointF(0.5, 0.5));
        }
        arsession::ARCamera camera;
        camera.transform = pose;
        camera.intrinsics = c.lens;
        camera.imageResolution = c.picture;
        ARWindow ar([&] { return std::make_unique<StillCameraBackend>(camera, std::vector<std::shared_ptr<const QImage>>{picture}, QSizeF(0.6, 0.6)); });
        const QImage shown = ar.place(reality::ModelEntity::fromImportedScene(plateScene));
        ASSERT_EQ(shown.size(), kViewSize);

        // Centroids count pixels by their index: a region centred on the point p of the view
        // has its centroid at p − (0.5, 0.5).
        const QPointF half(0.5, 0.5);
        int marksShown = 0;
        for (const QPointF& mark : drawnAt) {
            const QPointF where = inView(mark, QSizeF(c.picture), QSizeF(kViewSize)) - half;
            const QRect around = QRect(int(where.x()) - 20, int(where.y()) - 20, 41, 41);
            if (!shown.rect().contains(around)) continue; // cropped away
            ++marksShown;
            const Region drawn = find(shown, blue, around);
            ASSERT_GT(drawn.count, 10) << "mark not shown near " << where.x() << ", " << where.y();
            EXPECT_LT(QLineF(drawn.centroid, where).length(), 1.0);
        }
        EXPECT_GT(marksShown, 0);
        const Region dish = find(shown, litRed);
        ASSERT_GT(dish.count, 200);
        // The centroid of the top as the picture shows it: its four corners' polygon.
        QPolygonF top;
        for (const QVector3D& corner : plateTop)
            top << inView(inPicture(pose, c.lens, corner) + half, QSizeF(c.picture), QSizeF(kViewSize));
        const QPointF dishAt = polygonCentroid(top) - half;
        EXPECT_LT(QLineF(dish.centroid, dishAt).length(), 1.0)
            << "dish drawn at " << dish.centroid.x() << ", " << dish.centroid.y() << "; its place shows at "
            << dishAt.x() << ", " << dishAt.y();
        EXPECT_EQ(find(shown, amber).count, 0) << "focus square left on the photo";

        if (c.picture == kViewSize) {
            // The picture itself is shown as taken, away from the dish and its shadow.
            int changed = 0;
            for (int y = 0; y < kViewSize.height(); ++y)
                for (int x = 0; x < kViewSize.width(); ++x) {
                    if (QLineF(QPointF(x, y), dishAt).length() < 70) continue;
                    const QRgb a = shown.pixel(x, y), b = picture->pixel(x, y);
                    if (std::abs(qRed(a) - qRed(b)) + std::abs(qGreen(a) - qGreen(b)) + std::abs(qBlue(a) - qBlue(b)) > 3)
                        ++changed;
                }
            EXPECT_EQ(changed, 0);
        }
    }
}
