#pragma once
// Where the AR view's camera picture and its tracking come from: the simulated room (the
// default), a live camera, a video file or a folder of numbered pictures. Everything but the
// simulated room looks for a printed table card in the picture and stands the dish on it; the
// card's table is the one plane the AR view finds.
//
//     using orvanta::ARSource;
//     QString whyNot;
//     if (!orvanta::RestaurantSDK::shared().setARSource(
//             ARSource::camera().withCalibration("/etc/kiosk/camera.yml"), &whyNot))
//         qWarning() << whyNot;
//
// The table card is described by one text:
//   "charuco:COLSxROWS:SQUARE_M:MARKER_M:DICT"  a ChArUco board, squares and markers in metres
//                                               and the marker dictionary by OpenCV's name,
//                                               e.g. "charuco:5x7:0.03:0.022:DICT_6X6_250";
//   "aruco:DICT:ID:SIDE_M"                      one marker, e.g. "aruco:DICT_4X4_50:7:0.1";
//   "qr:SIDE_M"                                 the table's printed QR code, its side in metres.
// A calibration file is OpenCV's FileStorage YAML with `camera_matrix`,
// `distortion_coefficients`, `image_width` and `image_height`; pictures of another size than
// the calibration scale its intrinsics. Without one a typical laptop camera's lens is assumed,
// which places the dish less exactly.
// Thread: any; a value.

#include <QByteArray>
#include <QSizeF>
#include <QString>

namespace orvanta {

class ARSource {
public:
    enum class Kind { simulated, camera, videoFile, pictureFolder };

    // The card the kit assumes unless told otherwise, and the one orvanta-card prints: a 5 × 7
    // ChArUco board of 3 cm squares with 2.2 cm markers (15 × 21 cm, it fits A4 and Letter).
    static constexpr const char* defaultTableCard = "charuco:5x7:0.03:0.022:DICT_6X6_250";

    // The simulated room, seen through a hand-held camera.
    static ARSource simulated();
    // A live camera: `deviceId` is the id of one of Qt Multimedia's video inputs
    // (QCameraDevice::id()); empty picks the system's default camera. A camera that is missing
    // or fails interrupts the session; it does not end the experience.
    static ARSource camera(QByteArray deviceId = {});
    // A video file played in a loop, read through Qt Multimedia.
    static ARSource videoFile(QString path);
    // The PNG or JPEG pictures of a folder, in the order of the numbers in their names, shown
    // at `framesPerSecond`, once; the last picture stays.
    static ARSource pictureFolder(QString path, double framesPerSecond = 30.0);

    // A copy that looks for another table card (see above).
    ARSource withTableCard(QString card) const;
    // A copy that reads the camera's lens from `path`; empty assumes the default lens.
    ARSource withCalibration(QString path) const;
    // A copy whose table plane is `size` metres (width, depth) around the card, at least the
    // card itself; 0.6 m × 0.6 m by default.
    ARSource withTableSize(QSizeF size) const;

    Kind kind() const { return kind_; }
    const QByteArray& deviceId() const { return deviceId_; }
    // The video file or the picture folder; empty for the others.
    const QString& path() const { return path_; }
    double framesPerSecond() const { return framesPerSecond_; }
    const QString& tableCard() const { return tableCard_; }
    const QString& calibrationFile() const { return calibrationFile_; }
    QSizeF tableSize() const { return tableSize_; }

    friend bool operator==(const ARSource&, const ARSource&) = default;

private:
    explicit ARSource(Kind kind) : kind_(kind) {}

    Kind kind_;
    QByteArray deviceId_;
    QString path_;
    double framesPerSecond_ = 30.0;
    QString tableCard_ = QString::fromLatin1(defaultTableCard);
    QString calibrationFile_;
    QSizeF tableSize_{0.6, 0.6};
};

} // namespace orvanta
