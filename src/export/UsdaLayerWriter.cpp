#include "export/UsdaLayerWriter.h"

#include <charconv>

namespace orvanta::exporter {

namespace {

class TextWriter {
public:
    explicit TextWriter(const UsdLayerPlan& plan) : plan_(plan) {}

    QByteArray run() {
        out_ += "#usda 1.0\n(\n    defaultPrim = \"";
        out_ += plan_.defaultPrim;
        out_ += "\"\n    metersPerUnit = 1\n    upAxis = \"Y\"\n)\n\n";
        if (!plan_.prims.empty()) prim(0, 0);
        return std::move(out_);
    }

private:
    void indent(int depth) { out_.append(depth * 4, ' '); }

    void number(float value) {
        char buffer[32];
        const auto end = std::to_chars(buffer, buffer + sizeof buffer, value).ptr;
        out_.append(buffer, end - buffer);
    }

    void quoted(const std::string& text) {
        out_ += '"';
        for (char c : text) {
            if (c == '"' || c == '\\') out_ += '\\';
            out_ += c;
        }
        out_ += '"';
    }

    void tuple(const float* values, int width) {
        out_ += '(';
        for (int i = 0; i < width; ++i) {
            if (i) out_ += ", ";
            number(values[i]);
        }
        out_ += ')';
    }

    void value(const UsdPlanValue& v) {
        if (const auto* b = std::get_if<bool>(&v)) out_ += *b ? "1" : "0";
        else if (const auto* f = std::get_if<float>(&v)) number(*f);
        else if (const auto* t = std::get_if<UsdToken>(&v)) quoted(t->text);
        else if (const auto* a = std::get_if<UsdAssetPath>(&v)) { out_ += '@'; out_ += a->path; out_ += '@'; }
        else if (const auto* v2 = std::get_if<QVector2D>(&v)) { const float c[2] = {v2->x(), v2->y()}; tuple(c, 2); }
        else if (const auto* v3 = std::get_if<QVector3D>(&v)) { const float c[3] = {v3->x(), v3->y(), v3->z()}; tuple(c, 3); }
        else if (const auto* v4 = std::get_if<QVector4D>(&v)) { const float c[4] = {v4->x(), v4->y(), v4->z(), v4->w()}; tuple(c, 4); }
        else if (const auto* m = std::get_if<QMatrix4x4>(&v)) {
            // USD's rows are the column vectors of the kit's matrices: the storage order.
            out_ += "( ";
            for (int row = 0; row < 4; ++row) {
                if (row) out_ += ", ";
                tuple(m->constData() + row * 4, 4);
            }
            out_ += " )";
        } else if (const auto* fa = std::get_if<UsdFloatArray>(&v)) {
            out_ += '[';
            for (std::size_t i = 0; i < fa->count; ++i) {
                if (i) out_ += ", ";
                if (fa->width == 1) number(fa->data[i]);
                else tuple(fa->data + i * static_cast<std::size_t>(fa->width), fa->width);
            }
            out_ += ']';
        } else if (const auto* ia = std::get_if<UsdIntArray>(&v)) {
            out_ += '[';
            for (std::size_t i = 0; i < ia->count; ++i) {
                if (i) out_ += ", ";
                char buffer[16];
                out_.append(buffer, std::to_chars(buffer, buffer + sizeof buffer, ia->data[i]).ptr - buffer);
            }
            out_ += ']';
        } else if (const auto* tokens = std::get_if<std::vector<std::string>>(&v)) {
            out_ += '[';
            for (std::size_t i = 0; i < tokens->size(); ++i) {
                if (i) out_ += ", ";
                quoted((*tokens)[i]);
            }
            out_ += ']';
        }
    }

    void property(const UsdPlanProperty& p, int depth) {
        indent(depth);
        if (p.typeName.empty()) {
            out_ += "rel ";
            out_ += p.name;
            out_ += " = <";
            out_ += p.target;
            out_ += ">\n";
            return;
        }
        if (p.uniform) out_ += "uniform ";
        out_ += p.typeName;
        out_ += ' ';
        out_ += p.name;
        if (!p.target.empty()) {
            out_ += ".connect = <";
            out_ += p.target;
            out_ += '>';
        } else if (!std::holds_alternative<std::monostate>(p.value)) {
            out_ += " = ";
            value(p.value);
        }
        if (!p.interpolation.empty()) {
            out_ += " (\n";
            indent(depth + 1);
            out_ += "interpolation = \"";
            out_ += p.interpolation;
            out_ += "\"\n";
            indent(depth);
            out_ += ')';
        }
        out_ += '\n';
    }

    void prim(int index, int depth) {
        const UsdPlanPrim& p = plan_.prims[static_cast<std::size_t>(index)];
        indent(depth);
        out_ += p.isClass ? "class " : "def ";
        out_ += p.typeName;
        out_ += ' ';
        quoted(p.name);
        if (!p.apiSchemas.empty() || p.instanceable || !p.reference.empty()) {
            out_ += " (\n";
            if (!p.apiSchemas.empty()) {
                indent(depth + 1);
                out_ += "prepend apiSchemas = ";
                value(p.apiSchemas);
                out_ += '\n';
            }
            if (p.instanceable) {
                indent(depth + 1);
                out_ += "instanceable = true\n";
            }
            if (!p.reference.empty()) {
                indent(depth + 1);
                out_ += "prepend references = <";
                out_ += p.reference;
                out_ += ">\n";
            }
            indent(depth);
            out_ += ')';
        }
        out_ += '\n';
        indent(depth);
        out_ += "{\n";
        for (const UsdPlanProperty& property : p.properties) this->property(property, depth + 1);
        for (int child : p.children) prim(child, depth + 1);
        indent(depth);
        out_ += "}\n";
    }

    const UsdLayerPlan& plan_;
    QByteArray out_;
};

} // namespace

QByteArray UsdaLayerWriter::write(const UsdLayerPlan& plan) { return TextWriter(plan).run(); }

} // namespace orvanta::exporter
