#include <OrvantaARFoodSDK/Router.h>

#include <QtGlobal>

#include <utility>

namespace orvanta {

Router::Router(QObject* parent) : QObject(parent) {}

void Router::setNavPath(std::vector<Destination> path) {
    navPath_ = std::move(path);
    emit navPathChanged();
}

void Router::go(Destination to) {
    navPath_.push_back(to);
    emit navPathChanged();
}

void Router::goBack() {
    removeLast(1);
}

void Router::goToRoot() {
    removeLast(static_cast<int>(navPath_.size()));
}

void Router::goBackTo(int destination) {
    removeLast(destination);
}

void Router::removeLast(int count) {
    const auto size = static_cast<long long>(navPath_.size());
    if (count < 0 || count > size) {
        qFatal("Router: cannot remove %d destinations from a navigation path of %lld", count,
               size);
    }
    navPath_.erase(navPath_.end() - count, navPath_.end());
    emit navPathChanged();
}

} // namespace orvanta
