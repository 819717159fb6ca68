#pragma once
// A list of dishes as the screens' grids and strips read them: name, price text, picture link
// (empty when the link forms no URL, so the card shows no picture element at all) and whether
// the dish is the selected one.
// Thread: main thread.

#include <OrvantaARFoodSDK/Food.h>

#include <QAbstractListModel>

#include <optional>
#include <vector>

namespace orvanta {

class FoodCardsModel : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role { NameRole = Qt::UserRole + 1, PriceTextRole, PictureRole, HasPictureRole, SelectedRole };

    explicit FoodCardsModel(QObject* parent = nullptr);

    // Replaces the dishes (the whole list is reset).
    void setFoods(std::vector<Food> foods);
    // Marks the dish equal to `food` as selected (none: nothing is).
    void setSelected(std::optional<Food> food);
    const std::vector<Food>& foods() const { return foods_; }

    // "£%.2f": the pound sign and the price with exactly two decimals, rounded.
    static QString priceText(double price);
    // The picture's URL, or an empty one when `link` forms no URL.
    static QUrl pictureUrl(const QString& link);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    std::vector<Food> foods_;
    std::optional<Food> selected_;
};

} // namespace orvanta
