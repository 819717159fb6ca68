#include "arsession/FrameRecord.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <string>

namespace orvanta::arsession {

namespace {

core::Error malformed(const std::string& what) { return core::Error(FrameRecord::errorDomain, 1, "Malformed frame record: " + what); }

QJsonArray numbers(const float* values, int count) {
    QJsonArray array;
    for (int i = 0; i < count; ++i) array.append(double(values[i]));
    return array;
}

QJsonArray vector3(const QVector3D& v) {
    const float values[3] = {v.x(), v.y(), v.z()};
    return numbers(values, 3);
}

// Reads `count` numbers; false when `value` is not such an array.
bool readNumbers(const QJsonValue& value, float* out, int count) {
    const QJsonArray array = value.toArray();
    if (!value.isArray() || array.size() != count) return false;
    for (int i = 0; i < count; ++i) {
        if (!array[i].isDouble()) return false;
        out[i] = float(array[i].toDouble());
    }
    return true;
}

bool readMatrix(const QJsonValue& value, QMatrix4x4& matrix) {
    float values[16];
    if (!readNumbers(value, values, 16)) return false;
    matrix = QMatrix4x4(values).transposed(); // the constructor takes rows; the record holds columns
    return true;
}

bool readVector3(const QJsonValue& value, QVector3D& vector) {
    float values[3];
    if (!readNumbers(value, values, 3)) return false;
    vector = QVector3D(values[0], values[1], values[2]);
    return true;
}

std::string text(const QJsonValue& value) { return value.toString().toStdString(); }

} // namespace

QByteArray FrameRecord::encode(const ARFrame& frame) {
    QJsonObject camera{
        {"transform", numbers(frame.camera.transform.constData(), 16)},
        {"tracking", QString::fromStdString(frame.camera.trackingState.description())},
        {"fov", double(frame.camera.verticalFieldOfView)},
    };
    if (frame.camera.hasImage()) {
        const CameraIntrinsics& lens = frame.camera.intrinsics;
        const float values[4] = {lens.fx, lens.fy, lens.cx, lens.cy};
        camera["intrinsics"] = numbers(values, 4);
        camera["image"] = QJsonArray{frame.camera.imageResolution.width(), frame.camera.imageResolution.height()};
    }
    QJsonArray planes;
    for (const auto& anchor : frame.anchors) {
        planes.append(QJsonObject{
            {"id", anchor.identifier.toString(QUuid::WithoutBraces)},
            {"transform", numbers(anchor.transform.constData(), 16)},
            {"alignment", QString::fromUtf8(ARPlaneAnchor::name(anchor.alignment))},
            {"center", vector3(anchor.center)},
            {"extent", vector3(anchor.extent)},
            {"classification", QString::fromUtf8(ARPlaneAnchor::name(anchor.classification))},
        });
    }
    const QJsonObject object{{"t", frame.timestamp}, {"camera", camera}, {"planes", planes}};
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

std::variant<ARFrame, core::Error> FrameRecord::decode(const QByteArray& line) {
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(line, &parseError);
    if (parseError.error != QJsonParseError::NoError || !document.isObject())
        return malformed("not a JSON object (" + parseError.errorString().toStdString() + ")");
    const QJsonObject object = document.object();

    ARFrame frame;
    if (!object["t"].isDouble()) return malformed("no time");
    frame.timestamp = object["t"].toDouble();

    const QJsonObject camera = object["camera"].toObject();
    if (!readMatrix(camera["transform"], frame.camera.transform)) return malformed("bad camera transform");
    const auto tracking = TrackingState::fromDescription(text(camera["tracking"]));
    if (!tracking) return malformed("unknown tracking state \"" + text(camera["tracking"]) + "\"");
    frame.camera.trackingState = *tracking;
    if (!camera["fov"].isDouble()) return malformed("no field of view");
    frame.camera.verticalFieldOfView = float(camera["fov"].toDouble());
    if (camera.contains("intrinsics")) {
        float lens[4];
        float image[2];
        if (!readNumbers(camera["intrinsics"], lens, 4) || !readNumbers(camera["image"], image, 2))
            return malformed("bad camera intrinsics or image size");
        frame.camera.intrinsics = {lens[0], lens[1], lens[2], lens[3]};
        frame.camera.imageResolution = QSize(int(image[0]), int(image[1]));
    }

    if (!object["planes"].isArray()) return malformed("no plane list");
    for (const QJsonValue& value : object["planes"].toArray()) {
        const QJsonObject plane = value.toObject();
        ARPlaneAnchor anchor;
        anchor.identifier = QUuid(plane["id"].toString());
        if (anchor.identifier.isNull()) return malformed("bad plane id");
        if (!readMatrix(plane["transform"], anchor.transform)) return malformed("bad plane transform");
        const auto alignment = ARPlaneAnchor::alignmentNamed(text(plane["alignment"]));
        const auto classification = ARPlaneAnchor::classificationNamed(text(plane["classification"]));
        if (!alignment || !classification) return malformed("bad plane alignment or classification");
        anchor.alignment = *alignment;
        anchor.classification = *classification;
        if (!readVector3(plane["center"], anchor.center) || !readVector3(plane["extent"], anchor.extent))
            return malformed("bad plane center or extent");
        frame.anchors.push_back(anchor);
    }
    return frame;
}

} // namespace orvanta::arsession
