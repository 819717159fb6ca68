#include "DishRecipes.h"

#include "DishScene.h"
#include "MeshShapes.h"
#include "ProceduralTextures.h"

namespace orvanta::demo {

namespace {

constexpr int textureSize = 256;
constexpr int roundSegments = 48; // segments of large round shapes
constexpr int smallSegments = 16; // segments of small pieces

QMatrix4x4 at(float x, float y, float z) {
    QMatrix4x4 m;
    m.translate(x, y, z);
    return m;
}

QMatrix4x4 stretched(float x, float y, float z) {
    QMatrix4x4 m;
    m.scale(x, y, z);
    return m;
}

// A glazed plate of `radius` with a coloured band inside its rim. Its well, where food
// rests, is at y = plateTop.
constexpr float plateTop = 0.008f;
void addPlate(DishScene& dish, float radius, const QColor& band) {
    const float r = radius;
    const int glaze = dish.texturedMaterial("glaze", ProceduralTextures::glaze(textureSize, band), 0.2f);
    dish.place(dish.mesh(MeshShapes::lathe("plate",
                                           {{0, 0}, {0.62f * r, 0}, {0.62f * r, 0}, {0.66f * r, 0.006f},
                                            {r, 0.018f}, {r, 0.018f}, {r, 0.021f}, {r, 0.021f},
                                            {0.97f * r, 0.021f}, {0.66f * r, 0.010f}, {0.64f * r, plateTop},
                                            {0, plateTop}},
                                           roundSegments),
                         glaze),
               {});
}

// A bowl with a wall of some thickness, standing on y = 0: `radius` at its rim.
import::ImportedMesh bowl(float radius, float height) {
    const float r = radius, h = height, wall = 0.005f;
    return MeshShapes::lathe("bowl",
                             {{0, 0}, {0.5f * r, 0}, {0.5f * r, 0}, {0.5f * r, 0.1f * h}, {0.8f * r, 0.45f * h},
                              {r, h}, {r, h}, {r - wall, h}, {r - wall, h}, {0.78f * r, 0.5f * h},
                              {0.45f * r, 0.2f * h}, {0, 0.18f * h}},
                             roundSegments);
}

// A flat disc of `radius` facing up at y = 0, such as a liquid's surface.
import::ImportedMesh disc(std::string name, float radius) {
    return MeshShapes::lathe(std::move(name), {{radius, 0}, {0, 0}}, roundSegments);
}

// A leaf-like lens: a sphere squashed flat and long.
import::ImportedMesh leaf(std::string name, float length) {
    return MeshShapes::transformed(MeshShapes::sphere(std::move(name), length / 2, smallSegments),
                                   stretched(1.0f, 0.12f, 0.55f));
}

// One layer of a round cake cut to a slice of `degrees`, from y0 to y1: its curved back,
// top, bottom and the two cut faces.
import::ImportedMesh slice(std::string name, float radius, float y0, float y1, float degrees) {
    const float half = degrees / 2;
    import::ImportedMesh mesh = MeshShapes::lathe(name, {{0, y0}, {radius, y0}, {radius, y0}, {radius, y1},
                                                         {radius, y1}, {0, y1}},
                                                  smallSegments, -half, half);
    const QVector3D up(0, y1 - y0, 0), base(0, y0, 0);
    const float a = qDegreesToRadians(half);
    const QVector3D left(-radius * std::sin(a), 0, radius * std::cos(a)), right(radius * std::sin(a), 0, radius * std::cos(a));
    MeshShapes::append(mesh, MeshShapes::quad(name, base, left, up));
    MeshShapes::append(mesh, MeshShapes::quad(name, base, up, right));
    return mesh;
}

import::ImportedScene pizza() {
    DishScene dish("Pizza");
    addPlate(dish, 0.16f, QColor(40, 90, 160));
    const int top = dish.texturedMaterial("pizza", ProceduralTextures::pizzaTop(textureSize), 0.7f);
    dish.place(dish.mesh(MeshShapes::lathe("pizza",
                                           {{0, 0}, {0.128f, 0}, {0.14f, 0.007f}, {0.134f, 0.015f},
                                            {0.122f, 0.011f}, {0, 0.009f}},
                                           roundSegments),
                         top),
               at(0, plateTop, 0));
    const float toppings = plateTop + 0.009f;
    const int tomato = dish.mesh(MeshShapes::cylinder("tomato", 0.017f, 0.003f, smallSegments),
                                 dish.material("tomato", QColor(200, 40, 30), 0.45f));
    dish.scatter(tomato, 9, {0, toppings, 0}, 0.095f, 0, 7);
    const int mozzarella = dish.mesh(MeshShapes::transformed(MeshShapes::sphere("mozzarella", 0.014f, smallSegments),
                                                             stretched(1, 0.25f, 1)),
                                     dish.material("mozzarella", QColor(250, 248, 236), 0.5f));
    dish.scatter(mozzarella, 6, {0, toppings, 0}, 0.09f, 0, 13);
    const int basil = dish.mesh(leaf("basil", 0.028f), dish.material("basil", QColor(40, 130, 40), 0.55f));
    dish.scatter(basil, 8, {0, toppings + 0.004f, 0}, 0.09f, 10, 21);
    return dish.take();
}

import::ImportedScene burger() {
    DishScene dish("Burger");
    addPlate(dish, 0.13f, QColor(170, 40, 40));
    const int bun = dish.material("bun", QColor(206, 140, 60), 0.6f);
    float y = plateTop;
    dish.place(dish.mesh(MeshShapes::lathe("bun_bottom", {{0, 0}, {0.052f, 0}, {0.056f, 0.01f}, {0.054f, 0.02f}, {0, 0.02f}}, roundSegments), bun),
               at(0, y, 0));
    y += 0.02f;
    dish.place(dish.mesh(MeshShapes::lathe("patty", {{0, 0}, {0.058f, 0}, {0.061f, 0.008f}, {0.058f, 0.017f}, {0, 0.017f}}, roundSegments),
                         dish.material("patty", QColor(92, 52, 30), 0.8f)),
               at(0, y, 0));
    y += 0.017f;
    QMatrix4x4 cheeseTurn = at(0, y + 0.0015f, 0);
    cheeseTurn.rotate(45, 0, 1, 0);
    dish.place(dish.mesh(MeshShapes::box("cheese", {0.092f, 0.003f, 0.092f}), dish.material("cheese", QColor(250, 190, 40), 0.4f)),
               cheeseTurn);
    y += 0.003f;
    dish.place(dish.mesh(MeshShapes::cylinder("lettuce", 0.064f, 0.004f, roundSegments), dish.material("lettuce", QColor(110, 180, 60), 0.6f)),
               at(0, y, 0));
    y += 0.004f;
    dish.place(dish.mesh(MeshShapes::cylinder("tomato", 0.05f, 0.006f, roundSegments), dish.material("tomato", QColor(210, 50, 40), 0.4f)),
               at(0, y, 0));
    y += 0.006f;
    dish.place(dish.mesh(MeshShapes::lathe("bun_top", {{0, 0}, {0.055f, 0}, {0.058f, 0.01f}, {0.05f, 0.03f}, {0.03f, 0.042f}, {0, 0.046f}}, roundSegments), bun),
               at(0, y, 0));
    const int sesame = dish.mesh(MeshShapes::transformed(MeshShapes::sphere("sesame", 0.003f, 8), stretched(1, 0.5f, 1.8f)),
                                 dish.material("sesame", QColor(245, 230, 190), 0.5f));
    dish.scatter(sesame, 14, {0, y + 0.043f, 0}, 0.026f, 15, 3);
    return dish.take();
}

import::ImportedScene soup() {
    DishScene dish("Soup");
    addPlate(dish, 0.11f, QColor(60, 130, 90));
    dish.place(dish.mesh(bowl(0.08f, 0.065f), dish.material("bowl", QColor(240, 236, 226), 0.25f)), at(0, plateTop, 0));
    const float surface = plateTop + 0.052f;
    dish.place(dish.mesh(disc("soup", 0.071f), dish.material("soup", QColor(200, 70, 30), 0.3f)), at(0, surface, 0));
    dish.place(dish.mesh(MeshShapes::transformed(MeshShapes::torus("cream", 0.024f, 0.003f, 32), stretched(1, 0.4f, 1)),
                         dish.material("cream", QColor(250, 246, 235), 0.4f)),
               at(0, surface, 0));
    const int crouton = dish.mesh(MeshShapes::box("crouton", {0.011f, 0.009f, 0.011f}), dish.material("crouton", QColor(214, 160, 80), 0.8f));
    dish.scatter(crouton, 7, {0, surface + 0.002f, 0}, 0.05f, 20, 5);
    const int herb = dish.mesh(leaf("parsley", 0.008f), dish.material("parsley", QColor(50, 120, 40), 0.6f));
    dish.scatter(herb, 10, {0, surface + 0.001f, 0}, 0.04f, 10, 8);
    return dish.take();
}

import::ImportedScene sushi() {
    DishScene dish("Sushi");
    const float thickness = 0.02f;
    dish.place(dish.mesh(MeshShapes::box("board", {0.30f, thickness, 0.14f}),
                         dish.texturedMaterial("wood", ProceduralTextures::woodGrain(textureSize), 0.65f)),
               at(0, thickness / 2, 0));
    const int rice = dish.material("rice", QColor(246, 244, 236), 0.7f);
    const int salmon = dish.material("salmon", QColor(246, 120, 70), 0.35f);
    const int riceMound = dish.mesh(MeshShapes::transformed(MeshShapes::sphere("nigiri_rice", 0.024f, smallSegments), stretched(1, 0.5f, 0.55f)), rice);
    const int fish = dish.mesh(MeshShapes::transformed(MeshShapes::sphere("nigiri_salmon", 0.028f, smallSegments), stretched(1, 0.2f, 0.5f)), salmon);
    for (int i = 0; i < 3; ++i) {
        const float x = -0.10f + 0.055f * float(i);
        dish.place(riceMound, at(x, thickness + 0.010f, -0.025f));
        dish.place(fish, at(x, thickness + 0.019f, -0.025f));
    }
    const int nori = dish.mesh(MeshShapes::cylinder("maki_nori", 0.014f, 0.024f, smallSegments), dish.material("nori", QColor(28, 42, 30), 0.6f));
    const int makiRice = dish.mesh(MeshShapes::cylinder("maki_rice", 0.0125f, 0.0245f, smallSegments), rice);
    const int filling = dish.mesh(MeshShapes::cylinder("maki_filling", 0.005f, 0.025f, smallSegments), salmon);
    for (int i = 0; i < 4; ++i) {
        const QMatrix4x4 spot = at(-0.09f + 0.032f * float(i), thickness, 0.035f);
        for (const int part : {nori, makiRice, filling}) dish.place(part, spot);
    }
    dish.place(dish.mesh(MeshShapes::transformed(MeshShapes::sphere("wasabi", 0.012f, smallSegments), stretched(1, 0.6f, 1)),
                         dish.material("wasabi", QColor(120, 170, 50), 0.6f)),
               at(0.11f, thickness + 0.004f, -0.03f));
    const int ginger = dish.mesh(leaf("ginger", 0.025f), dish.material("ginger", QColor(246, 170, 170), 0.4f));
    dish.scatter(ginger, 5, {0.11f, thickness + 0.004f, 0.03f}, 0.012f, 30, 17);
    return dish.take();
}

import::ImportedScene cake() {
    DishScene dish("Cake");
    addPlate(dish, 0.10f, QColor(200, 150, 60));
    const float radius = 0.085f, degrees = 50.0f;
    const int sponge = dish.material("sponge", QColor(90, 50, 30), 0.8f);
    const int cream = dish.material("cream", QColor(250, 240, 225), 0.5f);
    const int icing = dish.material("icing", QColor(55, 28, 18), 0.3f);
    // The slice's tip at the plate's centre-left, turned so that a cut face, with its
    // layers, looks at the viewer (+z).
    QMatrix4x4 pointing = at(-0.035f, plateTop, -0.01f);
    pointing.rotate(65, 0, 1, 0);
    const float layers[] = {0, 0.025f, 0.032f, 0.057f, 0.062f};
    const int materials[] = {sponge, cream, sponge, icing};
    for (int i = 0; i < 4; ++i)
        dish.place(dish.mesh(slice("layer" + std::to_string(i), radius, layers[i], layers[i + 1], degrees), materials[i]), pointing);
    dish.place(dish.mesh(MeshShapes::transformed(MeshShapes::torus("rosette", 0.008f, 0.005f, smallSegments), stretched(1, 1.2f, 1)), cream),
               pointing * at(0, 0.066f, 0.06f));
    dish.place(dish.mesh(MeshShapes::sphere("cherry", 0.009f, smallSegments), dish.material("cherry", QColor(190, 20, 30), 0.2f)),
               pointing * at(0, 0.077f, 0.06f));
    return dish.take();
}

import::ImportedScene salad() {
    DishScene dish("Salad");
    addPlate(dish, 0.14f, QColor(90, 140, 60));
    dish.place(dish.mesh(bowl(0.11f, 0.06f), dish.material("bowl", QColor(235, 232, 224), 0.25f)), at(0, plateTop, 0));
    const QColor greens[] = {QColor(80, 160, 50), QColor(50, 120, 40), QColor(150, 200, 80)};
    for (int i = 0; i < 3; ++i) {
        const int lettuce = dish.mesh(leaf("leaf" + std::to_string(i), 0.05f),
                                      dish.material("leaf" + std::to_string(i), greens[i], 0.55f));
        dish.scatter(lettuce, 12, {0, plateTop + 0.045f + 0.01f * float(i), 0}, 0.07f - 0.015f * float(i), 35, 30 + std::uint32_t(i));
    }
    const int tomato = dish.mesh(MeshShapes::sphere("cherry_tomato", 0.012f, smallSegments), dish.material("tomato", QColor(215, 40, 30), 0.25f));
    dish.scatter(tomato, 6, {0, plateTop + 0.07f, 0}, 0.05f, 0, 41);
    const int cucumber = dish.mesh(MeshShapes::cylinder("cucumber", 0.014f, 0.004f, smallSegments), dish.material("cucumber", QColor(200, 225, 150), 0.5f));
    dish.scatter(cucumber, 6, {0, plateTop + 0.072f, 0}, 0.05f, 25, 43);
    const int crouton = dish.mesh(MeshShapes::box("crouton", {0.012f, 0.01f, 0.012f}), dish.material("crouton", QColor(214, 160, 80), 0.8f));
    dish.scatter(crouton, 5, {0, plateTop + 0.074f, 0}, 0.045f, 30, 47);
    return dish.take();
}

import::ImportedScene coffee() {
    DishScene dish("Coffee");
    addPlate(dish, 0.075f, QColor(30, 30, 30));
    const int china = dish.material("china", QColor(248, 246, 240), 0.15f);
    dish.place(dish.mesh(MeshShapes::lathe("cup",
                                           {{0, 0}, {0.025f, 0}, {0.025f, 0}, {0.025f, 0.004f}, {0.038f, 0.03f},
                                            {0.043f, 0.07f}, {0.043f, 0.07f}, {0.039f, 0.07f}, {0.039f, 0.07f},
                                            {0.034f, 0.03f}, {0.02f, 0.008f}, {0, 0.007f}},
                                           roundSegments),
                         china),
               at(0, plateTop, 0));
    QMatrix4x4 handle = at(0.047f, plateTop + 0.042f, 0);
    handle.rotate(90, 1, 0, 0);
    dish.place(dish.mesh(MeshShapes::transformed(MeshShapes::torus("handle", 0.014f, 0.004f, 24), stretched(1, 1, 1.3f)), china), handle);
    const float surface = plateTop + 0.064f;
    dish.place(dish.mesh(disc("coffee", 0.0383f), dish.material("crema", QColor(150, 95, 50), 0.3f)), at(0, surface, 0));
    dish.place(dish.mesh(MeshShapes::transformed(MeshShapes::sphere("foam", 0.02f, smallSegments), stretched(1, 0.1f, 1)),
                         dish.material("foam", QColor(236, 220, 196), 0.6f)),
               at(0, surface, 0));
    return dish.take();
}

import::ImportedScene sundae() {
    DishScene dish("Sundae");
    addPlate(dish, 0.085f, QColor(200, 80, 130));
    const int glass = dish.material("glass", QColor(225, 240, 250), 0.05f);
    dish.makeTranslucent(glass, 0.35f);
    dish.place(dish.mesh(MeshShapes::lathe("glass",
                                           {{0, 0}, {0.03f, 0}, {0.03f, 0}, {0.03f, 0.004f}, {0.007f, 0.01f},
                                            {0.005f, 0.05f}, {0.02f, 0.065f}, {0.04f, 0.1f}, {0.045f, 0.14f},
                                            {0.045f, 0.14f}, {0.043f, 0.14f}, {0.043f, 0.14f}, {0.038f, 0.1f},
                                            {0.018f, 0.068f}, {0, 0.063f}},
                                           roundSegments),
                         glass),
               at(0, plateTop, 0));
    const float base = plateTop;
    dish.place(dish.mesh(MeshShapes::lathe("sauce", {{0, 0.064f}, {0.018f, 0.069f}, {0.034f, 0.092f}, {0, 0.092f}}, roundSegments),
                         dish.material("sauce", QColor(180, 20, 40), 0.2f)),
               at(0, base, 0));
    dish.place(dish.mesh(MeshShapes::lathe("cream", {{0, 0.092f}, {0.034f, 0.092f}, {0.039f, 0.12f}, {0, 0.12f}}, roundSegments),
                         dish.material("cream", QColor(252, 248, 236), 0.5f)),
               at(0, base, 0));
    const int pink = dish.mesh(MeshShapes::sphere("scoop_strawberry", 0.024f, 24), dish.material("strawberry_ice", QColor(240, 150, 170), 0.6f));
    const int vanilla = dish.mesh(MeshShapes::sphere("scoop_vanilla", 0.022f, 24), dish.material("vanilla_ice", QColor(250, 238, 200), 0.6f));
    dish.place(pink, at(-0.013f, base + 0.13f, 0.006f));
    dish.place(vanilla, at(0.015f, base + 0.128f, -0.006f));
    dish.place(dish.mesh(MeshShapes::transformed(MeshShapes::sphere("strawberry", 0.01f, smallSegments), stretched(1, 1.3f, 1)),
                         dish.material("strawberry", QColor(210, 25, 35), 0.3f)),
               at(0, base + 0.158f, 0));
    const int mint = dish.mesh(leaf("mint", 0.018f), dish.material("mint", QColor(60, 160, 70), 0.5f));
    dish.scatter(mint, 2, {0, base + 0.168f, 0}, 0.006f, 30, 61);
    return dish.take();
}

} // namespace

const std::vector<DishRecipe>& DishRecipes::all() {
    static const std::vector<DishRecipe> recipes{
        {"Pizza Margherita", "pizza-margherita", 11.50, DishFormat::usdzCrate, pizza},
        {"Classic Burger", "classic-burger", 12.00, DishFormat::glb, burger},
        {"Tomato Soup", "tomato-soup", 6.50, DishFormat::usdzText, soup},
        {"Salmon Sushi", "salmon-sushi", 14.00, DishFormat::usdzCrate, sushi},
        {"Chocolate Cake", "chocolate-cake", 5.50, DishFormat::usdzText, cake},
        {"Garden Salad", "garden-salad", 8.00, DishFormat::glb, salad},
        {"Cappuccino", "cappuccino", 3.20, DishFormat::usdzCrate, coffee},
        {"Strawberry Sundae", "strawberry-sundae", 6.00, DishFormat::usdzText, sundae},
    };
    return recipes;
}

} // namespace orvanta::demo
