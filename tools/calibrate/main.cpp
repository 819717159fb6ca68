// orvanta-calibrate OUT.yml (--camera [DEVICE] | --photos DIR | --video FILE) [--card TEXT] [--screen FILE.png]
// Calibrates a camera from views of a printed ChArUco card (OpenCV's ChArUco calibration) and
// writes the OpenCV FileStorage YAML the kit reads: camera_matrix, distortion_coefficients,
// image_width, image_height and the reprojection error. From photos or a video every usable
// view is used; from a live camera a view is taken each time the card is seen from a new
// angle, until enough are taken. With photos or a video, --screen writes the last view the
// card was found in as the live calibration's window shows it, to see what the tool sees.
// Exit status 0 when the file is written; 1 with the reason and what to do on standard error
// (no camera, too few usable views, a calibration whose reprojection error says it is wrong);
// 2 for bad arguments.

#include "calibrate/CharucoViews.h"
#include "calibrate/LiveCalibration.h"
#include "common/ToolCommandLine.h"

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <opencv2/videoio.hpp>

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

using orvanta::arsession::camera::TableCard;
using orvanta::calibrate::CharucoViews;
using orvanta::calibrate::LiveCalibration;

// A video gives many near-identical frames; this many, spread over the video, are plenty.
constexpr int mostVideoViews = 40;

int fail(const std::string& message, int status = 1) {
    std::fprintf(stderr, "orvanta-calibrate: %s\n", message.c_str());
    return status;
}

// The picture of the last view added, kept for --screen (`path` empty without it).
struct LastView {
    std::string path;
    cv::Mat picture;
};

// Adds `picture`'s view when it shows enough of the board; false when it does not.
bool addView(CharucoViews& views, const cv::Mat& picture, cv::Size& size, LastView& last) {
    if (picture.empty()) return false;
    if (size.empty()) size = picture.size();
    if (picture.size() != size) return false;
    cv::Mat grey;
    if (picture.channels() == 1) grey = picture;
    else cv::cvtColor(picture, grey, cv::COLOR_BGR2GRAY);
    auto detection = views.detect(grey);
    if (!detection) return false;
    views.add(std::move(*detection), size);
    if (!last.path.empty()) last.picture = picture.clone();
    return true;
}

// Writes the window's view of the last picture added, when --screen asks for it; false when
// it cannot.
bool writeScreen(const CharucoViews& views, const LastView& last) {
    if (last.path.empty()) return true;
    const std::string& path = last.path;
    if (last.picture.empty()) {
        std::fprintf(stderr, "orvanta-calibrate: no view of the card to draw into %s\n", path.c_str());
        return false;
    }
    // Photos are read and videos decoded in colour, three channels.
    cv::Mat screen = last.picture.clone();
    LiveCalibration::drawScreen(screen, &views.views().back(), views.count());
    if (cv::imwrite(path, screen)) return true;
    std::fprintf(stderr, "orvanta-calibrate: cannot write %s\n", path.c_str());
    return false;
}

int calibrateAndSave(const CharucoViews& views, const TableCard& card, const std::string& output) {
    const auto outcome = views.calibrate();
    if (!outcome) return fail(outcome.error().localizedDescription());
    if (!CharucoViews::save(outcome.value(), card, output)) return fail("cannot write " + output);
    const auto& k = outcome->lens.intrinsics;
    std::printf("Calibrated from %d views: focal lengths %.1f, %.1f px, principal point %.1f, %.1f px, "
                "reprojection error %.2f px; written to %s\n",
                outcome->views, k.fx, k.fy, k.cx, k.cy, outcome->reprojectionError, output.c_str());
    return 0;
}

int fromPhotos(const QString& folder, const TableCard& card, const std::string& output, LastView& last) {
    const QDir dir(folder);
    if (!dir.exists()) return fail("no folder " + folder.toStdString());
    const QStringList names = dir.entryList({"*.png", "*.jpg", "*.jpeg", "*.bmp", "*.tif", "*.tiff"},
                                            QDir::Files, QDir::Name | QDir::IgnoreCase);
    CharucoViews views(card);
    cv::Size size;
    QStringList unusable;
    for (const QString& name : names)
        if (!addView(views, cv::imread(dir.filePath(name).toStdString(), cv::IMREAD_COLOR), size, last))
            unusable << name;
    std::printf("%d of %lld pictures show the card well enough", views.count(), static_cast<long long>(names.size()));
    if (!unusable.isEmpty()) std::printf(" (not: %s)", qPrintable(unusable.join(", ")));
    std::printf("\n");
    if (!writeScreen(views, last)) return 1;
    return calibrateAndSave(views, card, output);
}

int fromVideo(const QString& file, const TableCard& card, const std::string& output, LastView& last) {
    cv::VideoCapture video(file.toStdString());
    if (!video.isOpened()) return fail("cannot read the video " + file.toStdString());
    const int frames = std::max(1, int(video.get(cv::CAP_PROP_FRAME_COUNT)));
    const int step = std::max(1, frames / mostVideoViews);
    CharucoViews views(card);
    cv::Size size;
    int read = 0;
    cv::Mat picture;
    for (int index = 0; video.read(picture); ++index) {
        ++read;
        if (index % step == 0) addView(views, picture, size, last);
    }
    std::printf("%d of %d frames looked at show the card well enough (of %d in the video)\n", views.count(),
                (read + step - 1) / step, read);
    if (!writeScreen(views, last)) return 1;
    return calibrateAndSave(views, card, output);
}

} // namespace

int main(int argc, char** argv) {
    // Only the live camera shows a window.
    const bool live = std::any_of(argv + 1, argv + argc, [](const char* a) { return std::strcmp(a, "--camera") == 0; });
    if (!live && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);

    QCommandLineParser parser;
    orvanta::tools::ToolCommandLine::prepare(parser, "orvanta-calibrate",
                                             "Calibrates a camera from views of a printed ChArUco card.");
    parser.addPositionalArgument("OUT.yml", "the calibration file to write");
    parser.addPositionalArgument("[DEVICE]", "with --camera: the camera's id (default: the system's camera)");
    parser.addOption({"camera", "calibrate live from a camera"});
    parser.addOption({"photos", "calibrate from the pictures in a folder", "DIR"});
    parser.addOption({"video", "calibrate from a video file", "FILE"});
    parser.addOption({"card", QString("the ChArUco card (default ") + TableCard::defaultText + ")", "TEXT"});
    parser.addOption({"screen",
                      "with --photos or --video: write the last view the card was found in, as the live "
                      "calibration's window shows it, to a PNG",
                      "FILE.png"});
    if (!parser.parse(app.arguments())) return fail(parser.errorText().toStdString(), 2);
    if (parser.isSet("help")) parser.showHelp(0);
    if (parser.isSet("version")) parser.showVersion();

    const QStringList positional = parser.positionalArguments();
    const int sources = int(live) + int(parser.isSet("photos")) + int(parser.isSet("video"));
    if (sources != 1) return fail("give one of --camera [DEVICE], --photos DIR or --video FILE (see --help)", 2);
    if (positional.isEmpty() || positional.size() > (live ? 2 : 1))
        return fail("give the calibration file to write, OUT.yml (see --help)", 2);
    const std::string output = positional[0].toStdString();
    const auto card = TableCard::parse(parser.isSet("card") ? parser.value("card").toStdString() : TableCard::defaultText);
    if (!card) return fail(card.error().localizedDescription(), 2);
    if (card->kind != TableCard::Kind::charuco) return fail("calibration needs a charuco: card", 2);

    if (live && parser.isSet("screen")) return fail("--screen goes with --photos or --video", 2);
    LastView last{parser.value("screen").toStdString(), {}};
    if (parser.isSet("photos")) return fromPhotos(parser.value("photos"), card.value(), output, last);
    if (parser.isSet("video")) return fromVideo(parser.value("video"), card.value(), output, last);
    LiveCalibration calibration(card.value(), positional.size() == 2 ? positional[1].toUtf8() : QByteArray(), output,
                                [](int status) { QApplication::exit(status); });
    calibration.start();
    return app.exec();
}
