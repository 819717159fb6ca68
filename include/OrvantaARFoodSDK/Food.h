#pragma once
// One dish of a restaurant's menu: a random identity, a name, a picture link, a 3D-model
// link and a price in pounds sterling. An immutable value; a Q_GADGET so that QML can read
// its fields.
//
// Links are kept as text: a malformed link is only noticed where it is loaded.

#include <QObject>
#include <QString>
#include <QUuid>

#include <cstddef>
#include <functional>

namespace orvanta {

class Food {
    Q_GADGET
    Q_PROPERTY(QUuid id READ id CONSTANT)
    Q_PROPERTY(QString name READ name CONSTANT)
    Q_PROPERTY(QString imageURL READ imageURL CONSTANT)
    Q_PROPERTY(QString arUSDZLink READ arUSDZLink CONSTANT)
    Q_PROPERTY(double price READ price CONSTANT)

public:
    // A dish with a new random identity, so two dishes made from the same arguments are never
    // equal; only copies of one dish are. Main thread.
    Food(QString name, QString imageURL, QString arUSDZLink, double price);

    // The fields. Main thread.
    const QUuid& id() const { return id_; }
    const QString& name() const { return name_; }
    const QString& imageURL() const { return imageURL_; }
    const QString& arUSDZLink() const { return arUSDZLink_; }
    double price() const { return price_; }

    // All five fields equal, compared in declaration order (id, name, imageURL, arUSDZLink,
    // price), stopping at the first difference; price by floating-point equality. Main thread.
    friend bool operator==(const Food&, const Food&) = default;

private:
    // The declaration order is the comparison order of operator== and the hashing order.
    QUuid id_;
    QString name_;
    QString imageURL_;
    QString arUSDZLink_;
    double price_;
};

} // namespace orvanta

// Combines the hashes of id, name, imageURL, arUSDZLink and price, in that order, so equal
// dishes hash alike. Main thread.
template <>
struct std::hash<orvanta::Food> {
    std::size_t operator()(const orvanta::Food& food) const noexcept;
};
