#include "export/UsdzWriter.h"

#include "export/CrateLayerWriter.h"
#include "export/UsdLayerPlan.h"
#include "export/UsdaLayerWriter.h"
#include "export/ZipWriter.h"

#include <QFile>

#include <filesystem>

namespace orvanta::exporter {

namespace {

core::Error writeError(std::string message) { return core::Error("ModelExportError", 1, std::move(message)); }

std::span<const std::uint8_t> bytesOf(const QByteArray& bytes) {
    return {reinterpret_cast<const std::uint8_t*>(bytes.constData()), static_cast<std::size_t>(bytes.size())};
}

} // namespace

core::Result<UsdzWriter::Report> UsdzWriter::write(const import::ImportedScene& scene, QIODevice& out, Layer layer) {
    const UsdLayerPlan plan = UsdLayerPlan::of(scene);
    std::vector<std::uint8_t> crate;
    QByteArray text;
    ZipWriter zip;
    if (layer == Layer::crate) {
        crate = CrateLayerWriter::write(plan);
        zip.add("scene.usdc", std::span<const std::uint8_t>(crate));
    } else {
        text = UsdaLayerWriter::write(plan);
        zip.add("scene.usda", bytesOf(text));
    }
    for (const UsdPlanTexture& texture : plan.textures) zip.add(texture.path, bytesOf(texture.bytes));
    const qint64 start = out.pos();
    if (!zip.write(out)) return writeError("Cannot write the package: " + out.errorString().toStdString());
    return Report{static_cast<std::uint64_t>(out.pos() - start), plan.notes};
}

core::Result<UsdzWriter::Report> UsdzWriter::write(const import::ImportedScene& scene, const std::string& path, Layer layer) {
    // Written beside the target and renamed into place, so a reader never sees half a
    // package; no fsync, which would cost more than the writing itself.
    const std::filesystem::path target(path);
    std::filesystem::path partial = target;
    partial += ".partial";
    QFile file(QString::fromStdString(partial.string()));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return writeError("Cannot create " + path + ": " + file.errorString().toStdString());
    auto report = write(scene, file, layer);
    file.close();
    std::error_code error;
    if (report) std::filesystem::rename(partial, target, error);
    if (!report || error) {
        const std::string reason = error.message();
        std::filesystem::remove(partial, error);
        return report ? writeError("Cannot write " + path + ": " + reason) : report;
    }
    return report;
}

} // namespace orvanta::exporter
