#include "export/CrateLayerWriter.h"

#include "export/CrateWriter.h"

#include <bit>
#include <cstring>

namespace orvanta::exporter {

namespace {

using namespace crate;

class LayerWriter {
public:
    explicit LayerWriter(const UsdLayerPlan& plan) : plan_(plan), w_(8) {}

    std::vector<std::uint8_t> run() {
        w_.reserve(arrayBytes());
        std::vector<std::pair<std::string, std::uint64_t>> root{{"defaultPrim", w_.tokenInline(plan_.defaultPrim)},
                                                               {"metersPerUnit", rep(tDouble, std::bit_cast<std::uint32_t>(1.0f), isInlined)},
                                                               {"upAxis", w_.tokenInline("Y")}};
        if (!plan_.prims.empty()) root.push_back({"primChildren", w_.tokenVector({plan_.prims[0].name})});
        w_.spec("/", sPseudoRoot, root);
        for (const UsdPlanPrim& p : plan_.prims) prim(p);
        return w_.build();
    }

private:
    // The bytes the arrays take, so the layer's buffer is allocated once.
    std::size_t arrayBytes() const {
        std::size_t bytes = 0;
        for (const UsdPlanPrim& p : plan_.prims)
            for (const UsdPlanProperty& property : p.properties) {
                if (const auto* f = std::get_if<UsdFloatArray>(&property.value)) bytes += f->count * static_cast<std::size_t>(f->width) * 4 + 8;
                if (const auto* i = std::get_if<UsdIntArray>(&property.value)) bytes += i->count * 4 + 8;
            }
        return bytes + 64 * 1024;
    }

    std::uint64_t floats(std::uint8_t type, const float* values, int count) {
        const auto at = w_.here();
        for (int i = 0; i < count; ++i) w_.put(values[i]);
        return rep(type, at);
    }

    std::uint64_t value(const UsdPlanValue& v) {
        if (const auto* b = std::get_if<bool>(&v)) return rep(tBool, *b ? 1 : 0, isInlined);
        if (const auto* f = std::get_if<float>(&v)) return rep(tFloat, std::bit_cast<std::uint32_t>(*f), isInlined);
        if (const auto* t = std::get_if<UsdToken>(&v)) return w_.tokenInline(t->text);
        if (const auto* a = std::get_if<UsdAssetPath>(&v)) return rep(tAsset, w_.token(a->path), isInlined);
        if (const auto* v2 = std::get_if<QVector2D>(&v)) { const float c[2] = {v2->x(), v2->y()}; return floats(tVec2f, c, 2); }
        if (const auto* v3 = std::get_if<QVector3D>(&v)) { const float c[3] = {v3->x(), v3->y(), v3->z()}; return floats(tVec3f, c, 3); }
        if (const auto* v4 = std::get_if<QVector4D>(&v)) { const float c[4] = {v4->x(), v4->y(), v4->z(), v4->w()}; return floats(tVec4f, c, 4); }
        if (const auto* m = std::get_if<QMatrix4x4>(&v)) {
            // USD's rows are the column vectors of the kit's matrices: the storage order.
            const auto at = w_.here();
            for (int i = 0; i < 16; ++i) w_.put(static_cast<double>(m->constData()[i]));
            return rep(tMatrix4d, at);
        }
        if (const auto* fa = std::get_if<UsdFloatArray>(&v)) {
            const std::uint8_t type = fa->width == 3 ? tVec3f : fa->width == 2 ? tVec2f : tFloat;
            return w_.array(type, fa->data, fa->count, static_cast<std::size_t>(fa->width) * sizeof(float));
        }
        if (const auto* ia = std::get_if<UsdIntArray>(&v)) return w_.array(tInt, ia->data, ia->count, sizeof(std::int32_t));
        if (const auto* tokens = std::get_if<std::vector<std::string>>(&v)) {
            const auto at = w_.arrayCount(tokens->size());
            for (const std::string& t : *tokens) w_.put(w_.token(t));
            return rep(tToken, at, isArray);
        }
        return 0;
    }

    // A prepended reference list of one reference to a prim of this layer: no asset path,
    // the prim's path, an identity layer offset and no custom data.
    std::uint64_t internalReference(const std::string& path) {
        const std::uint32_t noAsset = w_.string("");
        const std::uint32_t target = w_.path(path);
        const auto at = w_.put(prepended);
        w_.put(std::uint64_t{1});
        w_.put(noAsset);
        w_.put(target);
        w_.put(0.0);
        w_.put(1.0);
        w_.put(std::uint64_t{0});
        return rep(tReferenceListOp, at);
    }

    void prim(const UsdPlanPrim& p) {
        std::vector<std::pair<std::string, std::uint64_t>> fields{{"specifier", rep(tSpecifier, p.isClass ? 2 : 0, isInlined)},
                                                                  {"typeName", w_.tokenInline(p.typeName)}};
        if (p.instanceable) fields.push_back({"instanceable", rep(tBool, 1, isInlined)});
        if (!p.reference.empty()) fields.push_back({"references", internalReference(p.reference)});
        if (!p.children.empty()) {
            std::vector<std::string> names;
            for (int child : p.children) names.push_back(plan_.prims[static_cast<std::size_t>(child)].name);
            fields.push_back({"primChildren", w_.tokenVector(names)});
        }
        if (!p.properties.empty()) {
            std::vector<std::string> names;
            for (const UsdPlanProperty& property : p.properties) names.push_back(property.name);
            fields.push_back({"properties", w_.tokenVector(names)});
        }
        if (!p.apiSchemas.empty()) {
            std::vector<std::uint32_t> tokens;
            for (const std::string& schema : p.apiSchemas) tokens.push_back(w_.token(schema));
            fields.push_back({"apiSchemas", w_.listOp(tTokenListOp, prepended, tokens)});
        }
        w_.spec(p.path, sPrim, fields);
        for (const UsdPlanProperty& property : p.properties) this->property(p.path, property);
    }

    void property(const std::string& primPath, const UsdPlanProperty& p) {
        const std::string path = primPath + "." + p.name;
        std::vector<std::pair<std::string, std::uint64_t>> fields;
        if (p.typeName.empty()) {
            fields.push_back({"targetPaths", w_.listOp(tPathListOp, explicitItems, {w_.path(p.target)})});
            w_.spec(path, sRelationship, fields);
            return;
        }
        fields.push_back({"typeName", w_.tokenInline(p.typeName)});
        if (p.uniform) fields.push_back({"variability", rep(tVariability, 1, isInlined)});
        if (!std::holds_alternative<std::monostate>(p.value)) fields.push_back({"default", value(p.value)});
        if (!p.interpolation.empty()) fields.push_back({"interpolation", w_.tokenInline(p.interpolation)});
        if (!p.target.empty()) fields.push_back({"connectionPaths", w_.listOp(tPathListOp, explicitItems, {w_.path(p.target)})});
        w_.spec(path, sAttribute, fields);
    }

    const UsdLayerPlan& plan_;
    CrateWriter w_;
};

} // namespace

std::vector<std::uint8_t> CrateLayerWriter::write(const UsdLayerPlan& plan) { return LayerWriter(plan).run(); }

} // namespace orvanta::exporter
