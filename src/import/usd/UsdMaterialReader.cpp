#include "import/usd/UsdMaterialReader.h"

#include "import/usd/UsdStagePath.h"
#include "import/usd/UsdStageValue.h"

#include <limits>

namespace orvanta::import::usd {

namespace {

constexpr int maxConnectionDepth = 16;

std::string shaderId(const UsdStage::Prim& prim) {
    const UsdStage::Property* id = prim.property("info:id");
    return id ? UsdStageValue::text(id->value()).value_or(std::string()) : std::string();
}

bool isEncodedImage(std::span<const std::uint8_t> bytes) {
    static constexpr std::uint8_t png[] = {0x89, 'P', 'N', 'G', 0x0d, 0x0a, 0x1a, 0x0a};
    static constexpr std::uint8_t jpeg[] = {0xff, 0xd8, 0xff};
    return (bytes.size() >= sizeof png && std::equal(std::begin(png), std::end(png), bytes.begin())) ||
           (bytes.size() >= sizeof jpeg && std::equal(std::begin(jpeg), std::end(jpeg), bytes.begin()));
}

std::optional<QVector3D> color(const Value* value) {
    const auto c = UsdStageValue::numbers(value, 3);
    if (c.size() != 3) return std::nullopt;
    return QVector3D(static_cast<float>(c[0]), static_cast<float>(c[1]), static_cast<float>(c[2]));
}

} // namespace

UsdMaterialReader::Input UsdMaterialReader::resolve(const UsdStage::Prim& prim, const std::string& input, int depth) const {
    const UsdStage::Property* property = prim.property(input);
    if (!property) return {};
    if (!property->targets.empty() && depth < maxConnectionDepth) {
        const std::string& target = property->targets.front();
        const UsdStage::Prim* source = stage_.prim(std::string(UsdStagePath::primOf(target)));
        const std::string sourceProperty(UsdStagePath::propertyNameOf(target));
        if (source) {
            if (shaderId(*source) == "UsdUVTexture") return Input{nullptr, 0, source};
            // An output of another shader is no constant; an input of a material or node
            // graph passes on whatever that input holds.
            if (sourceProperty.starts_with("outputs:")) return {};
            return resolve(*source, sourceProperty, depth + 1);
        }
    }
    Input result;
    result.value = property->value(&result.layer);
    return result;
}

const UsdStage::Prim* UsdMaterialReader::surfaceOf(const UsdStage::Prim& material) const {
    if (const UsdStage::Property* surface = material.property("outputs:surface"); surface && !surface->targets.empty()) {
        const UsdStage::Prim* shader = stage_.prim(std::string(UsdStagePath::primOf(surface->targets.front())));
        if (shader && shaderId(*shader) == "UsdPreviewSurface") return shader;
    }
    std::vector<int> pending(material.children.rbegin(), material.children.rend());
    while (!pending.empty()) {
        const UsdStage::Prim& prim = stage_.prims()[static_cast<std::size_t>(pending.back())];
        pending.pop_back();
        if (prim.typeName == "Shader" && shaderId(prim) == "UsdPreviewSurface") return &prim;
        pending.insert(pending.end(), prim.children.rbegin(), prim.children.rend());
    }
    return nullptr;
}

std::string UsdMaterialReader::primvarOf(const UsdStage::Prim& texture) const {
    const UsdStage::Prim* node = &texture;
    std::string input = "inputs:st";
    for (int depth = 0; depth < maxConnectionDepth; ++depth) {
        const UsdStage::Property* property = node->property(input);
        if (!property || property->targets.empty()) return {};
        node = stage_.prim(std::string(UsdStagePath::primOf(property->targets.front())));
        if (!node) return {};
        const std::string id = shaderId(*node);
        if (id.starts_with("UsdPrimvarReader")) {
            return UsdStageValue::text(resolve(*node, "inputs:varname").value).value_or(std::string());
        }
        input = id == "UsdTransform2d" ? "inputs:in" : "inputs:st";
    }
    return {};
}

std::optional<int> UsdMaterialReader::texture(const UsdStage::Prim& shader) {
    const Input file = resolve(shader, "inputs:file");
    const auto path = UsdStageValue::text(file.value);
    if (!path || path->empty()) return std::nullopt;
    auto asset = stage_.asset(file.layer, *path);
    if (!asset || !isEncodedImage(asset->bytes) ||
        asset->bytes.size() > static_cast<std::size_t>(std::numeric_limits<qsizetype>::max()))
        return std::nullopt;
    if (const auto it = textureByKey_.find(asset->key); it != textureByKey_.end()) return it->second;
    ImportedTexture texture;
    texture.uri = asset->path;
    texture.encoded = QByteArray::fromRawData(reinterpret_cast<const char*>(asset->bytes.data()),
                                              static_cast<qsizetype>(asset->bytes.size()));
    texture.owner = std::move(asset->owner);
    const int index = static_cast<int>(scene_.textures.size());
    scene_.textures.push_back(std::move(texture));
    textureByKey_.emplace(asset->key, index);
    return index;
}

int UsdMaterialReader::material(const std::string& path) {
    if (const auto it = byPath_.find(path); it != byPath_.end()) return it->second;
    const UsdStage::Prim* prim = stage_.prim(path);
    if (!prim || prim->typeName != "Material") {
        byPath_.emplace(path, -1);
        return -1;
    }
    ImportedMaterial material;
    material.name = prim->name;
    std::string primvar;
    if (const UsdStage::Prim* surface = surfaceOf(*prim)) {
        // A texture replaces the constant of its input; it also names the primvar to read.
        const auto textured = [&](const Input& input) -> std::optional<int> {
            if (!input.texture) return std::nullopt;
            if (primvar.empty()) primvar = primvarOf(*input.texture);
            return texture(*input.texture);
        };
        const Input diffuse = resolve(*surface, "inputs:diffuseColor");
        material.baseColorTexture = textured(diffuse);
        if (const auto rgb = color(diffuse.value)) material.baseColorFactor = QVector4D(*rgb, 1.0f);
        const Input emissive = resolve(*surface, "inputs:emissiveColor");
        material.emissiveTexture = textured(emissive);
        if (const auto rgb = color(emissive.value)) material.emissiveFactor = *rgb;
        else if (material.emissiveTexture) material.emissiveFactor = QVector3D(1, 1, 1);
        material.normalTexture = textured(resolve(*surface, "inputs:normal"));
        if (const auto metallic = UsdStageValue::number(resolve(*surface, "inputs:metallic").value))
            material.metallic = static_cast<float>(*metallic);
        if (const auto roughness = UsdStageValue::number(resolve(*surface, "inputs:roughness").value))
            material.roughness = static_cast<float>(*roughness);
        if (const auto opacity = UsdStageValue::number(resolve(*surface, "inputs:opacity").value)) {
            material.opacity = static_cast<float>(*opacity);
            material.baseColorFactor.setW(material.opacity);
        }
    }
    const int index = static_cast<int>(scene_.materials.size());
    scene_.materials.push_back(std::move(material));
    primvars_.push_back(std::move(primvar));
    byPath_.emplace(path, index);
    return index;
}

const std::string& UsdMaterialReader::texCoordPrimvar(int index) const {
    static const std::string none;
    return index >= 0 ? primvars_[static_cast<std::size_t>(index)] : none;
}

} // namespace orvanta::import::usd
