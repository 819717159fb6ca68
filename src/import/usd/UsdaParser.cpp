#include "import/usd/UsdaParser.h"

#include "import/ImportError.h"
#include "import/usd/UsdStagePath.h"
#include "import/usd/UsdaLexer.h"
#include "import/usd/UsdaValueReader.h"

#include <algorithm>
#include <optional>

namespace orvanta::import::usd {

namespace {

enum class ListOp { explicitItems, prepend, append, remove };

std::optional<ListOp> listOpOf(const UsdaToken& token) {
    if (token.isWord("prepend")) return ListOp::prepend;
    if (token.isWord("append") || token.isWord("add")) return ListOp::append;
    if (token.isWord("delete")) return ListOp::remove;
    return std::nullopt;
}

bool sameItem(const Reference& a, const Reference& b) { return a.assetPath == b.assetPath && a.primPath == b.primPath; }
template <class T> bool sameItem(const T& a, const T& b) { return a == b; }

// Applies one list-op statement to the items a spec already holds: several statements for
// the same field in one layer ("prepend references" and "append references") add up.
template <class T>
void combine(std::vector<T>& existing, std::vector<T> items, ListOp op) {
    const auto listed = [&items](const T& x) {
        return std::any_of(items.begin(), items.end(), [&x](const T& y) { return sameItem(x, y); });
    };
    if (op == ListOp::explicitItems) {
        existing = std::move(items);
        return;
    }
    existing.erase(std::remove_if(existing.begin(), existing.end(), listed), existing.end());
    if (op == ListOp::prepend) existing.insert(existing.begin(), items.begin(), items.end());
    if (op == ListOp::append) existing.insert(existing.end(), items.begin(), items.end());
}

template <class T>
T& listField(Spec& spec, const std::string& name) {
    Value& value = spec.fields[name];
    if (!value.get<T>()) value.data = T{};
    return std::get<T>(value.data);
}

void appendName(Spec& spec, const std::string& field, std::string_view name) {
    listField<TokenArray>(spec, field).push_back(Token{std::string(name)});
}

// Prim, variant set and variant names end up inside paths, so they may not hold path syntax.
bool validName(std::string_view name, bool variant) {
    if (name.empty()) return false;
    const auto ok = [variant](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
               static_cast<unsigned char>(c) >= 0x80 || (variant && (c == '-' || c == '|'));
    };
    if (!variant && name.front() >= '0' && name.front() <= '9') return false;
    return std::all_of(name.begin(), name.end(), ok);
}

Value number(double v) { return Value{DoubleArray{1, {v}, false}}; }

class Parser {
public:
    Parser(std::string_view body, int line, std::string identifier) : lexer_(body, line), reader_(lexer_) {
        layer_.identifier = std::move(identifier);
        layer_.specs["/"].type = SpecType::pseudoRoot;
    }

    core::Result<Layer> run() {
        parseLayer();
        if (lexer_.error())
            return importError(ImportErrorCode::malformedData, "USDA layer " + layer_.identifier + ", " + *lexer_.error());
        return std::move(layer_);
    }

private:
    void parseLayer() {
        if (lexer_.peek().is('(') &&
            !parseMetadataBlock([this](const std::string& key, ListOp) { return layerMetadata(key); }, &layer_.specs["/"]))
            return;
        while (lexer_.peek().kind != UsdaTokenKind::end) {
            if (!parseStatement("/", 0, false)) return;
        }
    }

    bool layerMetadata(const std::string& key) {
        Spec& root = layer_.specs["/"];
        if (key == "defaultPrim" || key == "upAxis") {
            std::string text;
            if (!reader_.readString(text)) return false;
            root.fields[key] = Value{Token{std::move(text)}};
            return true;
        }
        if (key == "metersPerUnit" || key == "startTimeCode" || key == "endTimeCode" ||
            key == "timeCodesPerSecond" || key == "framesPerSecond") {
            double v = 0;
            if (!reader_.readNumber(v)) return false;
            root.fields[key] = number(v);
            return true;
        }
        if (key == "doc" || key == "documentation") return readDocumentation(root);
        if (key == "subLayers") return readSubLayers(root);
        return reader_.skip();  // customLayerData, colour configuration, ...
    }

    // `[@a.usda@ (offset = 10), @b.usda@]`: the asset paths, their time offsets skipped.
    bool readSubLayers(Spec& root) {
        StringArray layers;
        if (!reader_.expect('[')) return false;
        while (!reader_.accept(']')) {
            UsdaToken token = lexer_.next();
            if (token.kind != UsdaTokenKind::asset) return lexer_.reject("expected a sublayer's asset path");
            layers.values.push_back(std::move(token.value));
            if (lexer_.peek().is('(') && !reader_.skip()) return false;
            reader_.accept(',');
        }
        root.fields["subLayers"] = Value{std::move(layers)};
        return true;
    }

    bool readDocumentation(Spec& spec) {
        std::string text;
        if (!reader_.readString(text)) return false;
        spec.fields["documentation"] = Value{std::move(text)};
        return true;
    }

    // '(' entries ')': a bare string is documentation; `[listop] key = value` otherwise.
    template <class F>
    bool parseMetadataBlock(F&& entry, Spec* docTarget = nullptr) {
        if (!reader_.expect('(')) return false;
        while (!reader_.accept(')')) {
            if (reader_.accept(';')) continue;
            if (lexer_.peek().kind == UsdaTokenKind::string) {
                if (docTarget ? !readDocumentation(*docTarget) : !reader_.skip()) return false;
                continue;
            }
            UsdaToken key = lexer_.next();
            ListOp op = ListOp::explicitItems;
            if (const auto listOp = listOpOf(key); listOp || key.isWord("reorder")) {
                op = listOp.value_or(ListOp::explicitItems);
                const bool reorder = !listOp;
                key = lexer_.next();
                if (reorder) {  // ordering hints change nothing the kit reads
                    if (key.kind != UsdaTokenKind::identifier || !reader_.expect('=') || !reader_.skip()) return false;
                    continue;
                }
            }
            if (key.kind != UsdaTokenKind::identifier) return lexer_.reject("expected a metadata name");
            if (!reader_.expect('=') || !entry(std::string(key.text), op)) return false;
        }
        return true;
    }

    bool primMetadata(Spec& spec, const std::string& path, const std::string& key, ListOp op) {
        if (key == "kind") {
            std::string text;
            if (!reader_.readString(text)) return false;
            spec.fields[key] = Value{Token{std::move(text)}};
            return true;
        }
        if (key == "active" || key == "instanceable" || key == "hidden") {
            bool flag = false;
            if (!reader_.readBool(flag)) return false;
            spec.fields[key] = Value{flag};
            return true;
        }
        if (key == "apiSchemas" || key == "variantSets") {
            std::vector<std::string> names;
            if (lexer_.peek().isWord("None")) lexer_.next();
            else if (!reader_.readStrings(names)) return false;
            if (key == "variantSets") {
                combine(listField<StringArray>(spec, "variantSetNames").values, std::move(names), op);
                return true;
            }
            std::vector<Token> tokens;
            for (std::string& n : names) tokens.push_back(Token{std::move(n)});
            combine(listField<TokenArray>(spec, key), std::move(tokens), op);
            return true;
        }
        if (key == "references" || key == "payload") {
            ReferenceArray items;
            if (!parseReferences(items)) return false;
            combine(listField<ReferenceArray>(spec, key), std::move(items), op);
            return true;
        }
        if (key == "inherits" || key == "specializes") {
            PathArray paths;
            if (!readAbsolutePaths(path, paths)) return false;
            combine(listField<PathArray>(spec, key), std::move(paths), op);
            return true;
        }
        if (key == "variants") {
            Value dictionary;
            if (!reader_.readDictionary(dictionary, 1)) return false;
            VariantSelection selection;
            for (const auto& [set, choice] : dictionary.get<Dictionary>()->entries) {
                if (const auto* text = choice->get<std::string>()) selection[set] = *text;
            }
            spec.fields["variantSelection"] = Value{std::move(selection)};
            return true;
        }
        if (key == "customData" || key == "assetInfo") return reader_.readDictionary(spec.fields[key], 1);
        if (key == "doc" || key == "documentation") return readDocumentation(spec);
        return reader_.skip();
    }

    bool propertyMetadata(Spec& spec, const std::string& key) {
        if (key == "interpolation") {
            std::string text;
            if (!reader_.readString(text)) return false;
            spec.fields[key] = Value{Token{std::move(text)}};
            return true;
        }
        if (key == "elementSize") {
            return reader_.read("int", false, spec.fields[key]);
        }
        if (key == "customData") return reader_.readDictionary(spec.fields[key], 1);
        if (key == "doc" || key == "documentation") return readDocumentation(spec);
        return reader_.skip();
    }

    bool readAbsolutePaths(const std::string& anchor, PathArray& out) {
        if (!reader_.readPaths(out)) return false;
        for (std::string& p : out) {
            auto absolute = UsdStagePath::absolute(anchor, p);
            if (!absolute) return lexer_.reject("path climbs above the root: " + p);
            p = std::move(*absolute);
        }
        return true;
    }

    bool parseReferences(ReferenceArray& out) {
        const auto one = [&] {
            UsdaToken token = lexer_.next();
            Reference reference;
            if (token.kind == UsdaTokenKind::asset) {
                reference.assetPath = std::move(token.value);
                if (lexer_.peek().kind == UsdaTokenKind::path) reference.primPath = lexer_.next().value;
            } else if (token.kind == UsdaTokenKind::path) {
                reference.primPath = std::move(token.value);
            } else {
                return lexer_.reject("expected a reference");
            }
            if (reference.assetPath.empty() && reference.primPath.empty()) return lexer_.reject("empty reference");
            out.push_back(std::move(reference));
            // A layer offset or custom data may follow; the kit does not use them.
            return !lexer_.peek().is('(') || reader_.skip();
        };
        if (lexer_.peek().isWord("None")) {
            lexer_.next();
            return true;
        }
        if (!lexer_.peek().is('[')) return one();
        lexer_.next();
        while (!reader_.accept(']')) {
            if (!one()) return false;
            if (!reader_.accept(',') && !lexer_.peek().is(']')) return lexer_.reject("expected ',' or ']' in references");
        }
        return true;
    }

    // layer_.specs[path], created on first use and then listed in its parent's `listField`.
    Spec& specAt(const std::string& path, SpecType type, const std::string& parent, const char* listField,
                 std::string_view name) {
        auto [it, inserted] = layer_.specs.try_emplace(path);
        if (inserted) {
            it->second.type = type;
            appendName(layer_.specs[parent], listField, name);
        }
        return it->second;
    }

    // One statement of a prim body (or of the layer, at "/"): a prim, a variant set, a
    // reorder statement or a property.
    bool parseStatement(const std::string& primPath, int depth, bool inPrim) {
        if (depth > UsdaValueReader::maxNesting) return lexer_.reject("prims nested too deeply");
        if (reader_.accept(';')) return true;
        const UsdaToken& token = lexer_.peek();
        if (token.isWord("def") || token.isWord("over") || token.isWord("class")) return parsePrim(primPath, depth);
        if (token.isWord("reorder")) {
            lexer_.next();
            return lexer_.next().kind == UsdaTokenKind::identifier ? reader_.expect('=') && reader_.skip()
                                                                   : lexer_.reject("malformed reorder statement");
        }
        if (!inPrim) return lexer_.reject("expected a prim");
        if (token.isWord("variantSet")) return parseVariantSet(primPath, depth);
        return parseProperty(primPath);
    }

    bool parseBody(const std::string& primPath, int depth) {
        if (!reader_.expect('{')) return false;
        while (!reader_.accept('}')) {
            if (lexer_.peek().kind == UsdaTokenKind::end) return lexer_.reject("missing '}'");
            if (!parseStatement(primPath, depth + 1, true)) return false;
        }
        return true;
    }

    bool parsePrim(const std::string& parentPath, int depth) {
        const UsdaToken specifier = lexer_.next();
        std::string typeName;
        if (lexer_.peek().kind == UsdaTokenKind::identifier) typeName = std::string(lexer_.next().text);
        std::string name;
        if (!reader_.readString(name)) return false;
        if (!validName(name, false)) return lexer_.reject("invalid prim name \"" + name + "\"");
        const std::string path = UsdStagePath::child(parentPath, name);
        Spec& spec = specAt(path, SpecType::prim, parentPath, "primChildren", name);
        spec.fields["specifier"] = Value{Token{std::string(specifier.text == "class" ? "class" : specifier.text)}};
        if (!typeName.empty()) spec.fields["typeName"] = Value{Token{std::move(typeName)}};
        if (lexer_.peek().is('(') &&
            !parseMetadataBlock([&](const std::string& key, ListOp op) { return primMetadata(spec, path, key, op); }, &spec))
            return false;
        return parseBody(path, depth);
    }

    bool parseVariantSet(const std::string& primPath, int depth) {
        lexer_.next();  // variantSet
        std::string setName;
        if (!reader_.readString(setName)) return false;
        if (!validName(setName, true)) return lexer_.reject("invalid variant set name \"" + setName + "\"");
        const std::string setPath = UsdStagePath::variant(primPath, setName, "");
        specAt(setPath, SpecType::variantSet, primPath, "variantSetChildren", setName);
        if (!reader_.expect('=') || !reader_.expect('{')) return false;
        while (!reader_.accept('}')) {
            std::string variantName;
            if (!reader_.readString(variantName)) return false;
            if (!validName(variantName, true)) return lexer_.reject("invalid variant name \"" + variantName + "\"");
            const std::string path = UsdStagePath::variant(primPath, setName, variantName);
            Spec& spec = specAt(path, SpecType::variant, setPath, "variantChildren", variantName);
            if (lexer_.peek().is('(') &&
                !parseMetadataBlock([&](const std::string& key, ListOp op) { return primMetadata(spec, path, key, op); }, &spec))
                return false;
            if (!parseBody(path, depth + 1)) return false;
        }
        return true;
    }

    bool parseProperty(const std::string& primPath) {
        const std::optional<ListOp> op = listOpOf(lexer_.peek());
        if (op) lexer_.next();
        const bool custom = lexer_.peek().isWord("custom");
        if (custom) lexer_.next();
        bool uniform = false;
        if (lexer_.peek().isWord("uniform") || lexer_.peek().isWord("varying") || lexer_.peek().isWord("config"))
            uniform = lexer_.next().text == "uniform";
        const UsdaToken type = lexer_.next();
        if (type.kind != UsdaTokenKind::identifier) return lexer_.reject("expected a property");
        const bool relationship = type.text == "rel";
        const bool isArray = !relationship && reader_.accept('[');
        if (isArray && !reader_.expect(']')) return false;
        const UsdaToken name = lexer_.next();
        if (name.kind != UsdaTokenKind::identifier) return lexer_.reject("expected a property name");
        std::string suffix;
        if (reader_.accept('.')) {
            const UsdaToken part = lexer_.next();
            if (part.kind != UsdaTokenKind::identifier) return lexer_.reject("expected connect or timeSamples");
            suffix = std::string(part.text);
        }
        const std::string path = UsdStagePath::property(primPath, name.text);
        Spec& spec = specAt(path, relationship ? SpecType::relationship : SpecType::attribute, primPath, "properties",
                            name.text);
        spec.fields["typeName"] = Value{Token{std::string(type.text) + (isArray ? "[]" : "")}};
        if (uniform) spec.fields["variability"] = Value{Token{"uniform"}};
        if (custom) spec.fields["custom"] = Value{true};

        if (reader_.accept('=')) {
            if (relationship || suffix == "connect") {
                PathArray targets;
                if (!readAbsolutePaths(primPath, targets)) return false;
                combine(listField<PathArray>(spec, relationship ? "targetPaths" : "connectionPaths"),
                        std::move(targets), op.value_or(ListOp::explicitItems));
            } else if (suffix == "timeSamples") {
                if (!reader_.readTimeSamples(type.text, isArray, spec.fields["timeSamples"])) return false;
            } else if (suffix.empty()) {
                if (!reader_.read(type.text, isArray, spec.fields["default"])) return false;
            } else if (!reader_.skip()) {  // splines and other value forms the kit does not read
                return false;
            }
        }
        return !lexer_.peek().is('(') ||
               parseMetadataBlock([&](const std::string& key, ListOp) { return propertyMetadata(spec, key); }, &spec);
    }

    UsdaLexer lexer_;
    UsdaValueReader reader_;
    Layer layer_;
};

} // namespace

core::Result<Layer> UsdaParser::parse(std::string_view text, std::string identifier) {
    const std::size_t lineEnd = std::min(text.find('\n'), text.size());
    const std::string_view header = text.substr(0, lineEnd);
    if (header.substr(0, 5) != "#usda" || (header.size() > 5 && header[5] != ' ' && header[5] != '\t' && header[5] != '\r'))
        return importError(ImportErrorCode::malformedData, "USDA layer " + identifier + " does not start with #usda");
    const std::size_t bodyStart = std::min(lineEnd + 1, text.size());
    return Parser(text.substr(bodyStart), 2, std::move(identifier)).run();
}

} // namespace orvanta::import::usd
