// The procedural dishes as the kit reads them back: every dish's files import through the
// reader of their format (USDZ with a crate layer, USDZ with a text layer, GLB), as a dish
// of true size resting on y = 0; and the menu pictures show the dish on the plate.
#include "DishModels.h"
#include "MenuPictures.h"
#include "import/SceneImporter.h"

#include <QImage>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>

using namespace orvanta;
using namespace orvanta::demo;

namespace {

class DishModelsTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        folder_ = new QTemporaryDir;
        const auto written = DishModels::ensure(folder());
        ASSERT_TRUE(written.ok()) << written.error().localizedDescription();
    }
    static void TearDownTestSuite() { delete folder_; }
    static std::string folder() { return folder_->path().toStdString(); }
    static std::string file(const std::string& name) { return folder() + "/" + name; }

    static QTemporaryDir* folder_;
};
QTemporaryDir* DishModelsTest::folder_ = nullptr;

void expectTrueSizeDish(const std::string& path) {
    SCOPED_TRACE(path);
    const auto scene = import::SceneImporter::importFile(path);
    ASSERT_TRUE(scene.ok()) << scene.error().localizedDescription();
    const import::Bounds bounds = scene->bounds();
    ASSERT_FALSE(bounds.empty);
    const QVector3D size = bounds.max - bounds.min;
    EXPECT_NEAR(bounds.min.y(), 0.0f, 1e-4f) << "rests on y = 0";
    EXPECT_GE(std::max(size.x(), size.z()), 0.05f);
    EXPECT_LE(std::max(size.x(), size.z()), 0.50f);
    EXPECT_GT(size.y(), 0.01f);
    EXPECT_FALSE(scene->textures.empty()) << "painted with a generated texture";
    for (const auto& mesh : scene->meshes) {
        EXPECT_EQ(mesh.normals.size(), mesh.positions.size()) << mesh.name;
        EXPECT_EQ(mesh.texCoords.size(), mesh.positions.size()) << mesh.name;
    }
}

} // namespace

TEST_F(DishModelsTest, EveryDishImportsThroughTheReaderOfItsFormatAtTrueSize) {
    std::map<import::ModelFormat, int> formats;
    for (const DishRecipe& recipe : DishRecipes::all()) {
        std::vector<std::string> files{DishModels::usdzName(recipe)};
        if (recipe.format == DishFormat::glb) files.push_back(DishModels::glbName(recipe));
        for (const std::string& name : files) {
            expectTrueSizeDish(file(name));
            std::ifstream in(file(name), std::ios::binary);
            std::vector<char> head(64);
            in.read(head.data(), std::streamsize(head.size()));
            ++formats[import::SceneImporter::sniff({reinterpret_cast<const std::uint8_t*>(head.data()), head.size()})];
        }
    }
    EXPECT_EQ(formats[import::ModelFormat::glb], 2);
    EXPECT_EQ(formats[import::ModelFormat::usdz], 8);
}

TEST_F(DishModelsTest, EnsureWritesOnlyWhatIsMissing) {
    EXPECT_EQ(DishModels::ensure(folder()).value(), 0);
    const DishRecipe& glbDish = DishRecipes::all()[1];
    ASSERT_EQ(glbDish.format, DishFormat::glb);
    std::filesystem::remove(file(DishModels::glbName(glbDish)));
    EXPECT_EQ(DishModels::ensure(folder()).value(), 1);
    expectTrueSizeDish(file(DishModels::glbName(glbDish)));
}

TEST_F(DishModelsTest, MenuPicturesShowTheDishOnItsPlate) {
    const auto drawn = MenuPictures::ensure(folder());
    ASSERT_TRUE(drawn.ok()) << drawn.error().localizedDescription();
    EXPECT_EQ(drawn.value(), int(DishRecipes::all().size()));
    for (const DishRecipe& recipe : DishRecipes::all()) {
        SCOPED_TRACE(recipe.name);
        const QImage picture(QString::fromStdString(file(MenuPictures::pictureName(recipe))));
        ASSERT_EQ(picture.size(), QSize(MenuPictures::size, MenuPictures::size));
        // The centre of the picture is the dish, not the viewer's background.
        const QColor background = picture.pixelColor(2, 2), centre = picture.pixelColor(256, 256);
        EXPECT_NE(background, centre);
    }
    EXPECT_EQ(MenuPictures::ensure(folder()).value(), 0);
}
