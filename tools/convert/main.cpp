// orvanta-convert [--text] IN OUT   (--help, --version)
// Imports IN the way the kit does (any format it reads) and writes OUT: a USDZ package
// (crate layer, or text with --text) when OUT ends in .usdz, a binary glTF when it ends in
// .glb. Instanced meshes are expanded into one node per copy (said on standard output, with
// the instance count). Prints what was written and every fact of the model the output cannot carry,
// including glTF extensions the kit does not read. Exit status 0 when OUT is written, 1 when
// reading or writing fails or the model has no triangles (the reason on standard error), 2
// for a wrong command line.

#include "ToolCommandLine.h"
#include "export/GlbWriter.h"
#include "export/UsdzWriter.h"
#include "import/SceneImporter.h"
#include "models/DrawingBudgetCheck.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

using orvanta::exporter::GlbWriter;
using orvanta::exporter::UsdzWriter;

// The glTF JSON of a .gltf file or of a GLB's first chunk; empty for anything else.
QJsonObject gltfJson(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return {};
    const QByteArray bytes = file.readAll();
    if (bytes.startsWith("glTF") && bytes.size() >= 20) {
        quint32 length = 0;
        std::memcpy(&length, bytes.constData() + 12, 4);
        return QJsonDocument::fromJson(bytes.mid(20, static_cast<qsizetype>(length))).object();
    }
    return QJsonDocument::fromJson(bytes).object();
}

// Extensions the file uses that the kit's import does not read.
std::vector<std::string> unreadExtensions(const QString& path) {
    static const QStringList read = {"KHR_texture_transform", "KHR_materials_unlit", "KHR_draco_mesh_compression"};
    std::vector<std::string> notes;
    for (const QJsonValue& name : gltfJson(path).value("extensionsUsed").toArray())
        if (!read.contains(name.toString())) notes.push_back("glTF extension " + name.toString().toStdString() + " is not read");
    return notes;
}

// "1 mesh", "3 meshes".
std::string counted(std::size_t n, const char* one, const char* many) {
    return std::to_string(n) + " " + (n == 1 ? one : many);
}

int fail(const std::string& path, const orvanta::core::Error& error) {
    std::fprintf(stderr, "%s: error: domain %s, code %d: %s\n", path.c_str(), error.domain().c_str(), error.code(),
                 error.localizedDescription().c_str());
    return 1;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    orvanta::tools::ToolCommandLine::prepare(parser, "orvanta-convert",
                                             "Converts a model file that OrvantaARFoodSDK reads to one USDZ or GLB file.");
    parser.addPositionalArgument("IN", "a USDZ, USDA, USDC, glTF, GLB or any other file the kit reads");
    parser.addPositionalArgument("OUT", "the file to write, ending in .usdz or .glb");
    const QCommandLineOption text("text", "Write the USDZ package's layer as text instead of binary (crate).");
    parser.addOption(text);
    parser.process(app);
    const QStringList arguments = parser.positionalArguments();
    if (arguments.size() != 2) {
        std::fprintf(stderr, "usage: orvanta-convert [--text] IN OUT   (OUT: .usdz or .glb; --help for more)\n");
        return 2;
    }
    const std::string in = arguments[0].toStdString();
    const std::string out = arguments[1].toStdString();
    const QString suffix = QFileInfo(arguments[1]).suffix().toLower();
    if (suffix != "usdz" && suffix != "glb") {
        std::fprintf(stderr, "%s: the output must end in .usdz or .glb\n", out.c_str());
        return 2;
    }
    auto scene = orvanta::import::SceneImporter::importFile(in);
    if (!scene) return fail(in, scene.error());
    if (scene->triangleCount() == 0) {
        std::fprintf(stderr, "%s: nothing to convert: the model has no triangles\n", in.c_str());
        return 1;
    }

    // Neither writer instances meshes yet: each copy becomes a node of its own. A model the kit
    // would refuse to draw is refused here too, before its copies are multiplied out in memory.
    if (const auto tooHeavy = orvanta::DrawingBudgetCheck::check(scene.value())) return fail(in, *tooHeavy);
    std::vector<std::string> notes = unreadExtensions(arguments[0]);
    const orvanta::import::DrawCost cost = scene->drawCost();
    const bool coloured = std::any_of(scene->nodes.begin(), scene->nodes.end(), [](const auto& node) {
        return std::any_of(node.instances.begin(), node.instances.end(), [](const auto& i) { return !i.table.colors.empty(); });
    });
    if (const std::size_t copies = scene->expandInstances(); copies > 0) {
        std::printf("expanded %llu instances into nodes of their own (%llu triangles drawn, as before)\n",
                    static_cast<unsigned long long>(cost.instances), static_cast<unsigned long long>(cost.triangles));
        if (coloured) notes.push_back("per-instance colours (the output has no instancing)");
    }
    if (suffix == "usdz") {
        const auto report = UsdzWriter::write(scene.value(), out, parser.isSet(text) ? UsdzWriter::Layer::text : UsdzWriter::Layer::crate);
        if (!report) return fail(out, report.error());
        notes.insert(notes.end(), report->notes.begin(), report->notes.end());
    } else {
        const auto report = GlbWriter::write(scene.value(), out);
        if (!report) return fail(out, report.error());
        notes.insert(notes.end(), report->notes.begin(), report->notes.end());
    }
    std::printf("%s -> %s: %s, %s, %s\n", in.c_str(), out.c_str(), counted(scene->meshes.size(), "mesh", "meshes").c_str(),
                counted(scene->materials.size(), "material", "materials").c_str(),
                counted(scene->textures.size(), "texture", "textures").c_str());
    for (const std::string& note : notes) std::printf("  not carried over: %s\n", note.c_str());
    return 0;
}
