// The JSON menu reader: a good file becomes the restaurant with its links resolved; every
// kind of bad file is refused with the file, the line and the field named, every problem of
// a file at once; what would mislead a restaurant is warned about.
#include "MenuFile.h"

#include "core/Url.h"
#include "support/TestModels.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace orvanta;
using namespace orvanta::demo;

namespace {

class MenuFileTest : public ::testing::Test {
protected:
    QString write(const QByteArray& text, const QString& name = "menu.json") {
        const QString path = folder_.filePath(name);
        QDir().mkpath(QFileInfo(path).path());
        orvanta::testing::TestModels::write(path.toStdString(), text);
        return path;
    }

    // The reading of `text`, which must fail; its message without the file's path.
    QString problems(const QByteArray& text) {
        const QString path = write(text);
        const auto menu = MenuFile::read(path);
        EXPECT_FALSE(menu.ok());
        if (menu.ok()) return {};
        EXPECT_EQ(menu.error().domain(), MenuFile::errorDomain);
        return QString::fromStdString(menu.error().localizedDescription()).replace(path + ":", "");
    }

    QTemporaryDir folder_;
};

} // namespace

TEST_F(MenuFileTest, AGoodFileBecomesTheRestaurantWithLocalLinksAsFileUrls) {
    write("picture", "pictures/margherita one.png");
    write("{\"asset\": {\"version\": \"2.0\"}, \"buffers\": [{\"uri\": \"data:application/octet-stream;base64,AAAA\"}]}",
          "tiramisu.gltf");
    const QString path = write(R"({
  "name": "Trattoria",
  "dishes": [
    { "name": "Margherita", "picture": "pictures/margherita one.png",
      "model": "https://example.com/margherita.usdz", "price": 9.5 },
    { "name": "Tiramisu", "picture": "", "model": "tiramisu.gltf", "price": 6 }
  ]
})");
    const auto menu = MenuFile::read(path);
    ASSERT_TRUE(menu.ok()) << menu.error().localizedDescription();
    EXPECT_TRUE(menu->warnings.isEmpty()) << menu->warnings.join('\n').toStdString();
    const Restaurant* restaurant = &menu->restaurant;
    EXPECT_EQ(restaurant->name(), "Trattoria");
    ASSERT_EQ(restaurant->foods().size(), 2u);
    const Food& first = restaurant->foods()[0];
    EXPECT_EQ(first.name(), "Margherita");
    EXPECT_EQ(first.imageURL(), QUrl::fromLocalFile(QDir(folder_.path()).filePath("pictures/margherita one.png")).toString(QUrl::FullyEncoded));
    EXPECT_EQ(first.arUSDZLink(), "https://example.com/margherita.usdz");
    EXPECT_EQ(first.price(), 9.5);
    const Food& second = restaurant->foods()[1];
    EXPECT_EQ(second.arUSDZLink(), QUrl::fromLocalFile(QDir(folder_.path()).filePath("tiramisu.gltf")).toString());
    EXPECT_EQ(second.price(), 6.0);
    // A picture link that is no URL is kept; the menu shows that dish without a picture.
    EXPECT_EQ(second.imageURL(), "");
    EXPECT_FALSE(core::Url::fromString(second.imageURL().toStdString()).has_value());
}

TEST_F(MenuFileTest, BadFilesNameTheFileLineAndField) {
    struct Case {
        const char* what;
        QByteArray text;
        const char* message; // after "<path>:"
    };
    const Case cases[] = {
        {"invalid JSON", "{\n  \"name\": \"A\",\n  \"dishes\": [ } \n}", "3: not valid JSON: "},
        {"not an object", "[1, 2]", "1: the menu must be a JSON object"},
        {"missing name", "{\n \"dishes\": [] }", "1: \"name\" is missing"},
        {"name of the wrong type", "{\n \"name\": 7,\n \"dishes\": [] }", "2: \"name\" must be a string"},
        {"empty list", "{ \"name\": \"A\",\n\n \"dishes\": [] }", "3: \"dishes\" must list at least one dish"},
        {"dishes not a list", "{ \"name\": \"A\", \"dishes\": {} }", "1: \"dishes\" must be a list"},
        {"missing field",
         "{ \"name\": \"A\", \"dishes\": [\n { \"name\": \"x\", \"picture\": \"p\", \"model\": \"https://e.com/m.glb\", \"price\": 1 },\n"
         " { \"name\": \"y\", \"model\": \"https://e.com/m.glb\", \"price\": 1 }\n] }",
         "3: dish 2: \"picture\" is missing"},
        {"price of the wrong type",
         "{ \"name\": \"A\",\n \"dishes\": [\n {\n \"name\": \"x\",\n \"picture\": \"p\",\n \"model\": \"https://e.com/m.glb\",\n"
         " \"price\": \"cheap\"\n }\n] }",
         "7: dish 1: \"price\" must be a number"},
        {"model of the wrong type",
         "{ \"name\": \"A\", \"dishes\": [ { \"name\": \"x\", \"picture\": \"p\",\n \"model\": null, \"price\": 1 } ] }",
         "2: dish 1: \"model\" must be a string"},
        {"dish not an object", "{ \"name\": \"A\", \"dishes\": [\n\n 3 ] }", "1: dish 1: must be an object"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const QString message = problems(c.text);
        EXPECT_TRUE(message.startsWith(c.message)) << message.toStdString();
    }
    const auto missing = MenuFile::read(folder_.filePath("none.json"));
    ASSERT_FALSE(missing.ok());
    EXPECT_TRUE(missing.error().localizedDescription().starts_with(folder_.filePath("none.json").toStdString() + ": cannot be read"));
}

TEST_F(MenuFileTest, EveryProblemOfAFileIsReportedAtOnce) {
    write("{\"buffers\": [{\"uri\": \"burger.bin\"}], \"images\": [{\"uri\": \"bun%20top.png\"}]}", "burger.gltf");
    const QString folder = QDir(folder_.path()).absolutePath();
    EXPECT_EQ(problems("{ \"name\": 3, \"dishes\": [\n"
                       " { \"name\": \"Burger\", \"picture\": \"\", \"model\": \"burger.gltf\", \"price\": 8 },\n"
                       " { \"name\": \"Soup\", \"picture\": \"\", \"model\": \"soup.usdz\" },\n"
                       " 4\n] }"),
              "1: \"name\" must be a string\n" +
                  QString("2: dish 1: \"model\" burger.gltf keeps its data in burger.bin, bun top.png, but the kit downloads "
                          "one file per dish: make it one GLB or USDZ file, for example with orvanta-convert burger.gltf "
                          "burger.glb\n") +
                  "3: dish 2: \"price\" is missing\n" + "3: dish 2: \"model\" " + folder + "/soup.usdz does not exist\n" +
                  "1: dish 3: must be an object");
}

TEST_F(MenuFileTest, ModelsSharingAFileNameAndMissingPicturesAreWarnedAbout) {
    write("glTF", "models/pizza.glb");
    write("glTF", "other/pizza.glb");
    const QString path = write(R"({ "name": "A", "dishes": [
 { "name": "Pizza", "picture": "", "model": "models/pizza.glb", "price": 8 },
 { "name": "Salad", "picture": "salad.png", "model": "https://example.com/salad.glb", "price": 5 },
 { "name": "Pizza bianca", "picture": "", "model": "other/pizza.glb", "price": 9 },
 { "name": "Greek salad", "picture": "", "model": "https://example.com/v2/salad.glb?fresh=1", "price": 6 }
] })");
    const auto menu = MenuFile::read(path);
    ASSERT_TRUE(menu.ok()) << menu.error().localizedDescription();
    EXPECT_EQ(menu->restaurant.foods().size(), 4u);
    const QString caches = ": the kit caches models by file name, so dish %1 would show dish %2's model; give every model a "
                           "file name of its own";
    EXPECT_EQ(menu->warnings,
              QStringList({path + ":3: dish 2: \"picture\" " + QDir(folder_.path()).absoluteFilePath("salad.png") +
                               " does not exist: the menu shows a spinner in its place",
                           path + ":4: dish 3: \"model\" has the file name pizza.glb, as dish 1's has" + caches.arg(3).arg(1),
                           path + ":5: dish 4: \"model\" has the file name salad.glb, as dish 2's has" + caches.arg(4).arg(2)}));
}
