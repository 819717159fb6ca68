#pragma once
// The observable menu state shared by the menu grid and the dish screen: the dishes as the
// host gave them, the same dishes with the chosen one moved to the front, and the dish chosen
// last. Each property has its own change signal, and every write of a property emits that
// signal only (also when the new value equals the old one), so an observer of one property is
// never woken by a write of another.
//
// The operations keep their documented names. The reordering operation shares its name with
// the `rearrangedFoods` property: in C++ the two are overloads (the getter takes no argument,
// the operation takes the chosen dish). The operations are C++ calls for the screens' state
// objects and are deliberately not invokable from QML, where a method could not share a
// property's name; QML binds to the properties.
//
// Thread: main thread only; no locks.

#include <OrvantaARFoodSDK/Food.h>
#include <OrvantaARFoodSDK/Restaurant.h>

#include <QObject>

#include <optional>
#include <vector>

namespace orvanta {

class FoodViewModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(std::vector<orvanta::Food> foods READ foods WRITE setFoods NOTIFY foodsChanged)
    Q_PROPERTY(std::vector<orvanta::Food> rearrangedFoods READ rearrangedFoods
                   WRITE setRearrangedFoods NOTIFY rearrangedFoodsChanged)
    Q_PROPERTY(std::optional<orvanta::Food> selectedFood READ selectedFood WRITE setSelectedFood
                   NOTIFY selectedFoodChanged)

public:
    // Empty `foods` and `rearrangedFoods`, no `selectedFood`. Main thread.
    explicit FoodViewModel(QObject* parent = nullptr);

    // The menu as the host gave it. Main thread.
    const std::vector<Food>& foods() const { return foods_; }
    // Replaces the menu and emits foodsChanged. Main thread.
    void setFoods(std::vector<Food> foods);

    // The menu with the chosen dish first. Main thread.
    const std::vector<Food>& rearrangedFoods() const { return rearrangedFoods_; }
    // Replaces the reordered menu and emits rearrangedFoodsChanged. Main thread.
    void setRearrangedFoods(std::vector<Food> foods);

    // The dish chosen last; absent until the first choice. Main thread.
    const std::optional<Food>& selectedFood() const { return selectedFood_; }
    // Replaces the chosen dish and emits selectedFoodChanged. Main thread.
    void setSelectedFood(std::optional<Food> food);

    // `foods` = the restaurant's dishes. Main thread.
    void updateFoodList(const Restaurant& restaurant);
    // `rearrangedFoods` = `foods` with the first dish equal to `selectedFood` moved to the
    // front (unchanged order if it is not on the menu). Main thread.
    void rearrangedFoods(const Food& selectedFood);
    // `selectedFood` = `food`. Main thread.
    void updatedSelectedFood(const Food& food);

signals:
    void foodsChanged();
    void rearrangedFoodsChanged();
    void selectedFoodChanged();

private:
    std::vector<Food> foods_;
    std::vector<Food> rearrangedFoods_;
    std::optional<Food> selectedFood_;
};

} // namespace orvanta
