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

// PNG and JPEG by their signatures; TGA, which has none, by its name.
bool isEncodedImage(std::span<const std::uint8_t> bytes, const std::string& path) {
    static constexpr std::uint8_t png[] = {0x89, 'P', 'N', 'G', 0x0d, 0x0a, 0x1a, 0x0a};
    static constexpr std::uint8_t jpeg[] = {0xff, 0xd8, 0xff};
    const QString name = QString::fromStdString(path);
    return (bytes.size() >= sizeof png && std::equal(std::begin(png), std::end(png), bytes.begin())) ||
           (bytes.size() >= sizeof jpeg && std::equal(std::begin(jpeg), std::end(jpeg), bytes.begin())) ||
           (bytes.size() > 18 && name.endsWith(".tga", Qt::CaseInsensitive));
}

std::optional<QVector4D> vector4(const Value* value) {
    const auto c = UsdStageValue::numbers(value, 4);
    if (c.size() != 4) return std::nullopt;
    return QVector4D(float(c[0]), float(c[1]), float(c[2]), float(c[3]));
}

std::optional<QVector2D> vector2(const Value* value) {
    const auto c = UsdStageValue::numbers(value, 2);
    if (c.size() != 2) return std::nullopt;
    return QVector2D(float(c[0]), float(c[1]));
}

TextureChannel channelOf(const std::string& output) {
    if (output == "outputs:r") return TextureChannel::r;
    if (output == "outputs:g") return TextureChannel::g;
    if (output == "outputs:b") return TextureChannel::b;
    if (output == "outputs:a") return TextureChannel::a;
    if (output == "outputs:rgba") return TextureChannel::rgba;
    return TextureChannel::rgb;
}

// "useMetadata" falls back to black: PNG, JPEG and TGA carry no wrap metadata.
TextureWrap wrapOf(const std::optional<std::string>& token) {
    if (token == "repeat") return TextureWrap::repeat;
    if (token == "clamp") return TextureWrap::clamp;
    if (token == "mirror") return TextureWrap::mirror;
    return TextureWrap::black;
}

TextureColorSpace colorSpaceOf(const std::optional<std::string>& token) {
    if (token == "sRGB") return TextureColorSpace::srgb;
    if (token == "raw") return TextureColorSpace::raw;
    return TextureColorSpace::automatic;
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
            const std::string id = shaderId(*source);
            if (id == "UsdUVTexture") return Input{nullptr, 0, source, sourceProperty, nullptr};
            if (id.starts_with("UsdPrimvarReader")) return Input{nullptr, 0, nullptr, sourceProperty, source};
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

std::pair<const UsdStage::Prim*, std::string> UsdMaterialReader::coordinatesOf(const UsdStage::Prim& texture) const {
    const UsdStage::Prim* node = &texture;
    const UsdStage::Prim* transform = nullptr;
    std::string input = "inputs:st";
    for (int depth = 0; depth < maxConnectionDepth; ++depth) {
        const UsdStage::Property* property = node->property(input);
        if (!property || property->targets.empty()) break;
        node = stage_.prim(std::string(UsdStagePath::primOf(property->targets.front())));
        if (!node) break;
        const std::string id = shaderId(*node);
        if (id.starts_with("UsdPrimvarReader"))
            return {transform, UsdStageValue::text(resolve(*node, "inputs:varname").value).value_or(std::string())};
        if (id == "UsdTransform2d" && !transform) transform = node;
        input = id == "UsdTransform2d" ? "inputs:in" : "inputs:st";
    }
    return {transform, {}};
}

int UsdMaterialReader::texture(const UsdStage::Prim& shader) {
    const Input file = resolve(shader, "inputs:file");
    const auto path = UsdStageValue::text(file.value);
    if (!path || path->empty()) return -1;
    auto asset = stage_.asset(file.layer, *path);
    if (!asset || !isEncodedImage(asset->bytes, asset->path) ||
        asset->bytes.size() > static_cast<std::size_t>(std::numeric_limits<qsizetype>::max()))
        return -1;
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

std::optional<ImportedTextureRef> UsdMaterialReader::textureRef(const Input& input, TexCoordPrimvars& primvars) {
    if (!input.texture) return std::nullopt;
    const UsdStage::Prim& shader = *input.texture;
    ImportedTextureRef ref;
    ref.texture = texture(shader);
    if (ref.texture < 0) return std::nullopt;
    ref.channel = channelOf(input.output);
    ref.wrapS = wrapOf(UsdStageValue::text(resolve(shader, "inputs:wrapS").value));
    ref.wrapT = wrapOf(UsdStageValue::text(resolve(shader, "inputs:wrapT").value));
    ref.colorSpace = colorSpaceOf(UsdStageValue::text(resolve(shader, "inputs:sourceColorSpace").value));
    if (const auto scale = vector4(resolve(shader, "inputs:scale").value)) ref.scale = *scale;
    if (const auto bias = vector4(resolve(shader, "inputs:bias").value)) ref.bias = *bias;
    const auto [transform, primvar] = coordinatesOf(shader);
    if (transform) {
        if (const auto offset = vector2(resolve(*transform, "inputs:translation").value)) ref.transform.offset = *offset;
        if (const auto scale = vector2(resolve(*transform, "inputs:scale").value)) ref.transform.scale = *scale;
        if (const auto rotation = UsdStageValue::number(resolve(*transform, "inputs:rotation").value))
            ref.transform.rotationDegrees = static_cast<float>(*rotation);
    }
    // A third coordinate primvar has no set of its own; it shares set 0.
    for (int set = 0; set < 2 && !primvar.empty(); ++set) {
        if (primvars[set].empty()) primvars[set] = primvar;
        if (primvars[set] == primvar) {
            ref.texCoordSet = set;
            break;
        }
    }
    return ref;
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
    TexCoordPrimvars primvars;
    bool vertexColored = false;
    if (const UsdStage::Prim* surface = surfaceOf(*prim)) {
        // A texture replaces the constant of its input.
        const auto input = [&](const char* name) { return resolve(*surface, name); };
        const auto number = [](const Input& in) { return UsdStageValue::number(in.value); };
        const Input diffuse = input("inputs:diffuseColor");
        material.baseColorTexture = textureRef(diffuse, primvars);
        if (const auto rgb = color(diffuse.value)) material.baseColorFactor = QVector4D(*rgb, 1.0f);
        vertexColored = diffuse.primvarReader &&
                        UsdStageValue::text(resolve(*diffuse.primvarReader, "inputs:varname").value) == "displayColor";
        const Input emissive = input("inputs:emissiveColor");
        material.emissiveTexture = textureRef(emissive, primvars);
        if (const auto rgb = color(emissive.value)) material.emissiveFactor = *rgb;
        else if (material.emissiveTexture) material.emissiveFactor = QVector3D(1, 1, 1);
        material.normalTexture = textureRef(input("inputs:normal"), primvars);
        const Input occlusion = input("inputs:occlusion");
        material.occlusionTexture = textureRef(occlusion, primvars);
        const Input metallic = input("inputs:metallic");
        material.metallicTexture = textureRef(metallic, primvars);
        if (const auto value = number(metallic)) material.metallic = static_cast<float>(*value);
        else if (material.metallicTexture) material.metallic = 1.0f;
        const Input roughness = input("inputs:roughness");
        material.roughnessTexture = textureRef(roughness, primvars);
        if (const auto value = number(roughness)) material.roughness = static_cast<float>(*value);
        else if (material.roughnessTexture) material.roughness = 1.0f;
        const Input opacity = input("inputs:opacity");
        material.opacityTexture = textureRef(opacity, primvars);
        if (const auto value = number(opacity)) material.opacity = static_cast<float>(*value);
        if (const auto threshold = number(input("inputs:opacityThreshold")); threshold && *threshold > 0) {
            material.alphaMode = AlphaMode::mask;
            material.alphaCutoff = static_cast<float>(*threshold);
        } else if (material.opacity < 1.0f || material.opacityTexture) {
            material.alphaMode = AlphaMode::blend;
        }
    }
    const int index = static_cast<int>(scene_.materials.size());
    scene_.materials.push_back(std::move(material));
    primvars_.push_back(std::move(primvars));
    readsDisplayColor_.push_back(vertexColored);
    byPath_.emplace(path, index);
    return index;
}

bool UsdMaterialReader::readsDisplayColor(int index) const {
    return index >= 0 && readsDisplayColor_[static_cast<std::size_t>(index)];
}

const UsdMaterialReader::TexCoordPrimvars& UsdMaterialReader::texCoordPrimvars(int index) const {
    static const TexCoordPrimvars none;
    return index >= 0 ? primvars_[static_cast<std::size_t>(index)] : none;
}

} // namespace orvanta::import::usd
