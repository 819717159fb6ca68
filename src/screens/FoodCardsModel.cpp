#include "screens/FoodCardsModel.h"

#include "core/Url.h"

#include <QUrl>

namespace orvanta {

FoodCardsModel::FoodCardsModel(QObject* parent) : QAbstractListModel(parent) {}

void FoodCardsModel::setFoods(std::vector<Food> foods) {
    beginResetModel();
    foods_ = std::move(foods);
    endResetModel();
}

void FoodCardsModel::setSelected(std::optional<Food> food) {
    selected_ = std::move(food);
    if (!foods_.empty()) emit dataChanged(index(0), index(rowCount() - 1), {SelectedRole});
}

QString FoodCardsModel::priceText(double price) { return QString::asprintf("£%.2f", price); }

QUrl FoodCardsModel::pictureUrl(const QString& link) {
    const auto url = core::Url::fromString(link.toStdString());
    return url ? url->toQUrl() : QUrl();
}

int FoodCardsModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(foods_.size());
}

QVariant FoodCardsModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount()) return {};
    const Food& food = foods_[static_cast<std::size_t>(index.row())];
    switch (role) {
    case NameRole: return food.name();
    case PriceTextRole: return priceText(food.price());
    case PictureRole: return pictureUrl(food.imageURL());
    case HasPictureRole: return !pictureUrl(food.imageURL()).isEmpty();
    case SelectedRole: return selected_ && *selected_ == food;
    default: return {};
    }
}

QHash<int, QByteArray> FoodCardsModel::roleNames() const {
    return {{NameRole, "name"}, {PriceTextRole, "priceText"}, {PictureRole, "picture"},
            {HasPictureRole, "hasPicture"}, {SelectedRole, "selected"}};
}

} // namespace orvanta
