// The JSON menu reader: a good file becomes the restaurant with its links resolved; every
// kind of bad file is refused with the file, the line and the field named.
#include "MenuFile.h"

#include "core/Url.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace orvanta;
using namespace orvanta::demo;

namespace {

class MenuFileTest : public ::testing::Test {
protected:
    QString write(const QByteArray& text) {
        const QString path = folder_.filePath("menu.json");
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(text);
        return path;
    }

    QTemporaryDir folder_;
};

} // namespace

TEST_F(MenuFileTest, AGoodFileBecomesTheRestaurantWithLocalLinksAsFileUrls) {
    const QString path = write(R"({
  "name": "Trattoria",
  "dishes": [
    { "name": "Margherita", "picture": "pictures/margherita one.png",
      "model": "https://example.com/margherita.usdz", "price": 9.5 },
    { "name": "Tiramisu", "picture": "", "model": "/srv/models/tiramisu.glb", "price": 6 }
  ]
})");
    const auto restaurant = MenuFile::read(path);
    ASSERT_TRUE(restaurant.ok()) << restaurant.error().localizedDescription();
    EXPECT_EQ(restaurant->name(), "Trattoria");
    ASSERT_EQ(restaurant->foods().size(), 2u);
    const Food& first = restaurant->foods()[0];
    EXPECT_EQ(first.name(), "Margherita");
    EXPECT_EQ(first.imageURL(), QUrl::fromLocalFile(QDir(folder_.path()).filePath("pictures/margherita one.png")).toString(QUrl::FullyEncoded));
    EXPECT_EQ(first.arUSDZLink(), "https://example.com/margherita.usdz");
    EXPECT_EQ(first.price(), 9.5);
    const Food& second = restaurant->foods()[1];
    EXPECT_EQ(second.arUSDZLink(), "file:///srv/models/tiramisu.glb");
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
         "{ \"name\": \"A\", \"dishes\": [\n { \"name\": \"x\", \"picture\": \"p\", \"model\": \"m\", \"price\": 1 },\n"
         " { \"name\": \"y\", \"model\": \"m\", \"price\": 1 }\n] }",
         "3: dish 2: \"picture\" is missing"},
        {"price of the wrong type",
         "{ \"name\": \"A\",\n \"dishes\": [\n {\n \"name\": \"x\",\n \"picture\": \"p\",\n \"model\": \"m\",\n"
         " \"price\": \"cheap\"\n }\n] }",
         "7: dish 1: \"price\" must be a number"},
        {"model of the wrong type",
         "{ \"name\": \"A\", \"dishes\": [ { \"name\": \"x\", \"picture\": \"p\",\n \"model\": null, \"price\": 1 } ] }",
         "2: dish 1: \"model\" must be a string"},
        {"dish not an object", "{ \"name\": \"A\", \"dishes\": [\n\n 3 ] }", "1: dish 1: must be an object"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const QString path = write(c.text);
        const auto restaurant = MenuFile::read(path);
        ASSERT_FALSE(restaurant.ok());
        EXPECT_EQ(restaurant.error().domain(), MenuFile::errorDomain);
        EXPECT_TRUE(restaurant.error().localizedDescription().starts_with(path.toStdString() + ":" + c.message))
            << restaurant.error().localizedDescription();
    }
    const auto missing = MenuFile::read(folder_.filePath("none.json"));
    ASSERT_FALSE(missing.ok());
    EXPECT_TRUE(missing.error().localizedDescription().starts_with(folder_.filePath("none.json").toStdString() + ": cannot be read"));
}
