#pragma once
// An observable navigation path for hosts: a stack of the kit's pushable screens, bottom
// first, with push, pop, pop-to-root and pop-by-count. The kit's own screens navigate by
// presentation flags and do not use it.
//
// `navPath` has one change signal, emitted exactly once per operation call or assignment,
// whether or not the path changed (goToRoot() on an empty path still emits once).
//
// Popping more destinations than the path holds (goBack() on an empty path, goBackTo() with
// a count above `navPath.size()`, or a negative count) is a fault of the caller and ends the
// process with a fatal message, in release builds too.
//
// Saving and restoring a path as JSON: <OrvantaARFoodSDK/DestinationCoding.h>.
//
// Thread: main thread only; no locks.

#include <QObject>

#include <vector>

namespace orvanta {

class Router : public QObject {
    Q_OBJECT
    Q_PROPERTY(std::vector<orvanta::Router::Destination> navPath READ navPath WRITE setNavPath
                   NOTIFY navPathChanged)

public:
    // The kit's two pushable screens: the dish screen and the snapshot preview. Equality is
    // equality of the case; std::hash hashes the case index (0 or 1).
    enum class Destination { foodAR = 0, imagePreview = 1 };
    Q_ENUM(Destination)

    // An empty path. Main thread.
    explicit Router(QObject* parent = nullptr);

    // The pushed destinations, bottom first. Main thread.
    const std::vector<Destination>& navPath() const { return navPath_; }
    // Replaces the whole path (for instance one restored from JSON). Main thread.
    void setNavPath(std::vector<Destination> path);

    // Pushes `to`. Main thread.
    void go(Destination to);
    // Pops one destination; fatal on an empty path. Main thread.
    void goBack();
    // Pops every destination, leaving the path empty. Main thread.
    void goToRoot();
    // Pops the last `destination` destinations: despite the name, the argument is a count,
    // not an index or a screen, so goBackTo(2) pops two screens. Fatal if the path holds
    // fewer. Main thread.
    void goBackTo(int destination);

signals:
    void navPathChanged();

private:
    void removeLast(int count);

    std::vector<Destination> navPath_;
};

} // namespace orvanta
