#include "DishModels.h"

#include "export/GlbWriter.h"
#include "export/UsdzWriter.h"

#include <filesystem>
#include <optional>

namespace orvanta::demo {

namespace {

core::Error writeError(const std::string& path, const std::string& reason) {
    return core::Error("DishModelsError", 1, path + ": " + reason);
}

// The GLB writer writes in place: write beside the target and rename, so that a run cut
// short never leaves half a file that a later run would take as written.
std::optional<core::Error> writeGlb(const import::ImportedScene& scene, const std::filesystem::path& target) {
    std::filesystem::path partial = target;
    partial += ".partial";
    const auto written = exporter::GlbWriter::write(scene, partial.string());
    if (!written) return written.error();
    std::error_code error;
    std::filesystem::rename(partial, target, error);
    if (error) return writeError(target.string(), error.message());
    return std::nullopt;
}

} // namespace

std::string DishModels::fileName(const DishRecipe& recipe, const char* extension) {
    return recipe.stem + "-v" + std::to_string(generatorVersion) + extension;
}

std::string DishModels::usdzName(const DishRecipe& recipe) { return fileName(recipe, ".usdz"); }
std::string DishModels::glbName(const DishRecipe& recipe) { return fileName(recipe, ".glb"); }

std::string DishModels::menuModelName(const DishRecipe& recipe) {
    return recipe.format == DishFormat::glb ? glbName(recipe) : usdzName(recipe);
}

core::Result<int> DishModels::ensure(const std::string& folder) { return write(folder, true); }
core::Result<int> DishModels::writeAll(const std::string& folder) { return write(folder, false); }

core::Result<int> DishModels::write(const std::string& folder, bool keepExisting) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) return writeError(folder, error.message());
    int written = 0;
    for (const DishRecipe& recipe : DishRecipes::all()) {
        const std::filesystem::path usdz = std::filesystem::path(folder) / usdzName(recipe);
        const std::filesystem::path glb = std::filesystem::path(folder) / glbName(recipe);
        const bool wantsGlb = recipe.format == DishFormat::glb;
        const bool needsUsdz = !keepExisting || !std::filesystem::exists(usdz);
        const bool needsGlb = wantsGlb && (!keepExisting || !std::filesystem::exists(glb));
        if (!needsUsdz && !needsGlb) continue;

        const import::ImportedScene scene = recipe.build();
        if (needsUsdz) {
            const auto layer = recipe.format == DishFormat::usdzText ? exporter::UsdzWriter::Layer::text
                                                                     : exporter::UsdzWriter::Layer::crate;
            const auto report = exporter::UsdzWriter::write(scene, usdz.string(), layer);
            if (!report) return report.error();
            ++written;
        }
        if (needsGlb) {
            if (auto failure = writeGlb(scene, glb)) return *failure;
            ++written;
        }
    }
    return written;
}

} // namespace orvanta::demo
