#include "import/usd/UsdXformOps.h"

#include "import/usd/UsdStageValue.h"

#include <QQuaternion>

#include <string_view>

namespace orvanta::import::usd {

namespace {

QVector3D axis(char c) {
    return c == 'X' ? QVector3D(1, 0, 0) : c == 'Y' ? QVector3D(0, 1, 0) : QVector3D(0, 0, 1);
}

QVector3D vector3(const std::vector<double>& v) {
    return {static_cast<float>(v[0]), static_cast<float>(v[1]), static_cast<float>(v[2])};
}

// The matrix of one op of kind `kind` ("translate", "rotateXZY", ...), or nullopt when the
// kind is unknown or the value has the wrong shape.
std::optional<QMatrix4x4> opMatrix(std::string_view kind, const Value* value) {
    QMatrix4x4 m;
    if (kind == "transform") {
        const auto v = UsdStageValue::numbers(value, 16);
        if (v.size() != 16) return std::nullopt;
        float rowMajor[16];
        for (int i = 0; i < 16; ++i) rowMajor[i] = static_cast<float>(v[static_cast<std::size_t>(i)]);
        // Written for row vectors (translation in the last row); Qt multiplies column vectors.
        return QMatrix4x4(rowMajor).transposed();
    }
    if (kind == "translate" || kind == "scale") {
        const auto v = UsdStageValue::numbers(value, 3);
        if (v.size() != 3) return std::nullopt;
        if (kind == "translate") m.translate(vector3(v));
        else m.scale(vector3(v));
        return m;
    }
    if (kind == "orient") {
        const auto q = UsdStageValue::numbers(value, 4);  // (i, j, k, real)
        if (q.size() != 4) return std::nullopt;
        QQuaternion rotation(static_cast<float>(q[3]), static_cast<float>(q[0]), static_cast<float>(q[1]),
                             static_cast<float>(q[2]));
        m.rotate(rotation.normalized());
        return m;
    }
    if (kind.size() == 7 && kind.substr(0, 6) == "rotate" && std::string_view("XYZ").find(kind[6]) != std::string_view::npos) {
        const auto angle = UsdStageValue::number(value);
        if (!angle) return std::nullopt;
        m.rotate(static_cast<float>(*angle), axis(kind[6]));
        return m;
    }
    if (kind.size() == 9 && kind.substr(0, 6) == "rotate") {
        const std::string_view order = kind.substr(6);
        const auto angles = UsdStageValue::numbers(value, 3);
        if (angles.size() != 3 || order.find_first_not_of("XYZ") != std::string_view::npos) return std::nullopt;
        // The first-named axis applies first, so its rotation is the rightmost factor.
        for (int i = 2; i >= 0; --i) {
            const char a = order[static_cast<std::size_t>(i)];
            m.rotate(static_cast<float>(angles[static_cast<std::size_t>(a - 'X')]), axis(a));
        }
        return m;
    }
    return std::nullopt;
}

} // namespace

QMatrix4x4 UsdXformOps::localTransform(const UsdStage::Prim& prim) {
    QMatrix4x4 result;
    const UsdStage::Property* order = prim.property("xformOpOrder");
    if (!order) return result;
    for (std::string name : UsdStageValue::names(order->value())) {
        constexpr std::string_view invertPrefix = "!invert!";
        const bool invert = name.starts_with(invertPrefix);
        if (invert) name.erase(0, invertPrefix.size());
        constexpr std::string_view opPrefix = "xformOp:";
        if (!name.starts_with(opPrefix)) continue;  // "!resetXformStack!"
        const UsdStage::Property* op = prim.property(name);
        if (!op) continue;
        const std::string_view rest = std::string_view(name).substr(opPrefix.size());
        auto matrix = opMatrix(rest.substr(0, rest.find(':')), op->value());
        if (!matrix) continue;
        if (invert) {
            bool invertible = false;
            const QMatrix4x4 inverse = matrix->inverted(&invertible);
            if (!invertible) continue;
            matrix = inverse;
        }
        result = result * *matrix;
    }
    return result;
}

} // namespace orvanta::import::usd
