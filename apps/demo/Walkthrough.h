#pragma once
// The road of one dish, driven through real input events on the host's window: the menu, a
// tap on a dish, AR mode until the dish stands on the simulated table (or, with a camera as
// the AR source, on the table card in the camera's picture), a capture, its
// thumbnail, the preview, Save to Photos, the share sheet and its copy to the clipboard, back
// to 3D mode, closing the dish, and the host's other way in: the kit presented full screen
// and closed by its back arrow. When the dish's model is made to fail, the road ends at the
// dish screen's failure message instead. Each step waits (at most 20 s) for the state it
// must reach, and still holds two frames later, then writes a numbered screenshot into the output folder and prints one line
// with its time. The saved photo (read once it is completely written) is copied beside the
// screenshots.
// Thread: main thread of the application, with the window shown.

#include <QElapsedTimer>
#include <QImage>
#include <QString>
#include <QVariant>

#include <functional>
#include <vector>

class QQuickItem;
class QQuickWindow;

namespace orvanta::demo {

class Walkthrough {
public:
    // Seconds a step may take to reach its state.
    static constexpr int stepTimeoutMs = 20000;

    // Which dish to open (its position on the menu), whether its model is made to fail and
    // whether the AR view films a table card instead of the simulated room.
    struct Route {
        int dish = 0;
        bool failing = false;
        bool camera = false;
    };

    Walkthrough(QQuickWindow& window, QString outputFolder, Route route);

    // Runs every step; 0 when all reached their state, otherwise 1 after naming the step.
    int run();

private:
    // A wait the kit's screens make on purpose, which a step's time includes.
    struct ScriptedWait {
        double seconds;
        const char* what; // null for a step without one
    };

    static const ScriptedWait firstLoadCheck;
    static const ScriptedWait thumbnailAnimation;

    // Runs `act`, waits until `reached` holds, then takes the screenshot `number`-`name`.png.
    bool step(const QString& name, const std::function<void()>& act, const std::function<bool()>& reached,
              ScriptedWait scripted = {0, nullptr});
    // The menu with its pictures, and the route's dish opened.
    bool openDish();
    // The rest of the road of a dish that loads.
    bool placeCaptureShareAndClose();
    // The closing line: the run's time and the scripted waits of the steps reached.
    void printSummary(bool finished) const;
    // Whether the AR view shows the dish, textured, on a plane its session found (the table).
    bool dishStands() const;
    // The item named `name` anywhere in the window (delegates included), or null.
    QQuickItem* item(const char* name) const;
    // The dish screen's state object, or null while no dish screen shows.
    QObject* dishScreen() const;
    // A property of the dish screen's state object; invalid while no dish screen shows.
    QVariant dishState(const char* property) const;
    // How many screens the kit's navigation stack holds; -1 while it moves or is not there.
    int stackDepth() const;
    // A left click in the middle of `target`, as a mouse would make it.
    void click(QQuickItem* target);
    // A click on the picture away from the controls: shows the dish screen's controls.
    void tapScreen();
    // Runs the event loop until `condition` holds or `timeoutMs` pass. Whether it held is not
    // returned: the step that follows checks the state it needs and reports it when missing.
    static void waitUntil(const std::function<bool()>& condition, int timeoutMs = stepTimeoutMs);
    // Asks the window for `count` more frames and waits (at most 1 s each) until they are drawn.
    void waitForFrames(int count);
    QString saveScreenshot(const QString& name);

    QQuickWindow& window_;
    QString folder_;
    Route route_;
    int number_ = 0;
    std::vector<ScriptedWait> waited_;
    QElapsedTimer clock_;
    QImage captured_;
};

} // namespace orvanta::demo
