// orvanta-inspect FILE...   (--help, --version)
// Imports each file the way the kit does (format sniffed from the bytes) and prints what it
// holds: format, node, mesh, vertex, triangle (stored), material and texture counts, the
// copies instance tables place, the triangles and draw calls drawing it takes (every copy
// counted), the meshes with
// vertex colours, a second coordinate set or tangents, bounds in metres, the time the import
// took, and each material's inputs with their textures (channel, coordinate set, colour
// space, wrap modes, transform, scale and bias), alpha mode, sidedness and shading. Exit status
// 0 when every file loads, 1 otherwise (each failure on standard error with its domain, code
// and message), 2 without a file.

#include "ToolCommandLine.h"
#include "import/SceneImporter.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>

namespace {

using namespace orvanta::import;

const char* channelName(TextureChannel channel) {
    constexpr const char* names[] = {"r", "g", "b", "a", "rgb", "rgba"};
    return names[static_cast<int>(channel)];
}

const char* wrapName(TextureWrap wrap) {
    constexpr const char* names[] = {"repeat", "clamp", "mirror", "black"};
    return names[static_cast<int>(wrap)];
}

const char* colorSpaceName(TextureColorSpace space) {
    constexpr const char* names[] = {"auto", "sRGB", "raw"};
    return names[static_cast<int>(space)];
}

// "    name: value", then " x texture N [...]" when a texture feeds the input.
void printInput(const char* name, const std::string& value, const std::optional<ImportedTextureRef>& ref) {
    std::printf("    %s: %s", name, value.c_str());
    if (ref) {
        std::printf(" x texture %d [%s, uv %d, %s, wrap %s/%s", ref->texture, channelName(ref->channel), ref->texCoordSet,
                    colorSpaceName(ref->colorSpace), wrapName(ref->wrapS), wrapName(ref->wrapT));
        const auto& t = ref->transform;
        if (!t.isIdentity())
            std::printf(", offset (%g, %g) rotation %g scale (%g, %g)", t.offset.x(), t.offset.y(), t.rotationDegrees, t.scale.x(), t.scale.y());
        if (ref->scale != QVector4D(1, 1, 1, 1) || ref->bias != QVector4D(0, 0, 0, 0))
            std::printf(", scale (%g, %g, %g, %g) bias (%g, %g, %g, %g)", ref->scale.x(), ref->scale.y(), ref->scale.z(),
                        ref->scale.w(), ref->bias.x(), ref->bias.y(), ref->bias.z(), ref->bias.w());
        std::printf("]");
    }
    std::printf("\n");
}

std::string number(float value) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

void printMaterial(std::size_t index, const ImportedMaterial& m) {
    std::printf("  material %zu \"%s\":\n", index, m.name.c_str());
    const QVector4D& base = m.baseColorFactor;
    printInput("base colour", "(" + number(base.x()) + ", " + number(base.y()) + ", " + number(base.z()) + ", " + number(base.w()) + ")",
               m.baseColorTexture);
    printInput("metallic", number(m.metallic), m.metallicTexture);
    printInput("roughness", number(m.roughness), m.roughnessTexture);
    if (m.normalTexture) printInput("normal", "scale " + number(m.normalScale), m.normalTexture);
    if (m.occlusionTexture) printInput("occlusion", "strength " + number(m.occlusionStrength), m.occlusionTexture);
    const QVector3D& e = m.emissiveFactor;
    printInput("emissive", "(" + number(e.x()) + ", " + number(e.y()) + ", " + number(e.z()) + ") x " + number(m.emissiveStrength),
               m.emissiveTexture);
    printInput("opacity", number(m.opacity), m.opacityTexture);
    const char* alpha = m.alphaMode == AlphaMode::mask ? "mask" : m.alphaMode == AlphaMode::blend ? "blend" : "opaque";
    std::printf("    alpha: %s", alpha);
    if (m.alphaMode == AlphaMode::mask) std::printf(" (cut-off %g)", m.alphaCutoff);
    std::printf("%s%s\n", m.doubleSided ? ", double-sided" : "", m.unlit ? ", unlit" : "");
}

void printScene(const std::string& path, const ImportedScene& scene, double milliseconds) {
    std::printf("%s\n", path.c_str());
    std::printf("  format: %s\n", scene.format.c_str());
    std::printf("  nodes: %zu\n", scene.nodes.size());
    std::printf("  meshes: %zu\n", scene.meshes.size());
    std::printf("  vertices: %zu\n", scene.vertexCount());
    std::printf("  triangles: %zu\n", scene.triangleCount());
    const DrawCost cost = scene.drawCost();
    std::printf("  instances: %llu\n", static_cast<unsigned long long>(cost.instances));
    std::printf("  triangles drawn: %llu\n", static_cast<unsigned long long>(cost.triangles));
    std::printf("  draw calls: %llu\n", static_cast<unsigned long long>(cost.drawCalls));
    std::printf("  materials: %zu\n", scene.materials.size());
    std::printf("  textures: %zu\n", scene.textures.size());
    const auto meshesWith = [&](auto&& has) { return std::count_if(scene.meshes.begin(), scene.meshes.end(), has); };
    std::printf("  meshes with vertex colours: %td\n", meshesWith([](const ImportedMesh& m) { return !m.colors.empty(); }));
    std::printf("  meshes with a second uv set: %td\n", meshesWith([](const ImportedMesh& m) { return !m.texCoords1.empty(); }));
    std::printf("  meshes with tangents: %td\n", meshesWith([](const ImportedMesh& m) { return !m.tangents.empty(); }));
    const auto bounds = scene.bounds();
    if (bounds.empty) {
        std::printf("  bounds: empty\n");
    } else {
        const auto size = bounds.max - bounds.min;
        std::printf("  bounds (m): min (%g, %g, %g) max (%g, %g, %g) size (%g, %g, %g)\n", bounds.min.x(),
                    bounds.min.y(), bounds.min.z(), bounds.max.x(), bounds.max.y(), bounds.max.z(), size.x(),
                    size.y(), size.z());
    }
    std::printf("  load time: %.3f ms\n", milliseconds);
    for (std::size_t m = 0; m < scene.materials.size(); ++m) printMaterial(m, scene.materials[m]);
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    orvanta::tools::ToolCommandLine::prepare(parser, "orvanta-inspect",
                                             "Imports model files the way OrvantaARFoodSDK does and prints what they hold.");
    parser.addPositionalArgument("FILE...", "USDZ, USDA, USDC, glTF, GLB or any other file the kit reads");
    parser.process(app);
    const QStringList files = parser.positionalArguments();
    if (files.isEmpty()) {
        std::fprintf(stderr, "usage: orvanta-inspect FILE...   (--help for more)\n");
        return 2;
    }
    int status = 0;
    for (const QString& file : files) {
        const std::string path = file.toStdString();
        const auto start = std::chrono::steady_clock::now();
        const auto result = SceneImporter::importFile(path);
        const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start;
        if (result) {
            printScene(path, result.value(), elapsed.count());
        } else {
            const auto& error = result.error();
            std::fprintf(stderr, "%s: error: domain %s, code %d: %s\n", path.c_str(), error.domain().c_str(),
                         error.code(), error.localizedDescription().c_str());
            status = 1;
        }
        std::fflush(stdout);
    }
    return status;
}
