#include "import/usd/UsdaValueReader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <unordered_map>

namespace orvanta::import::usd {

UsdaValueReader::Type UsdaValueReader::typeOf(std::string_view name) {
    static const std::unordered_map<std::string_view, Type> types = {
        {"bool", {Kind::boolean, 1}},
        {"uchar", {Kind::integer, 1}}, {"int", {Kind::integer, 1}}, {"uint", {Kind::integer, 1, false, true}},
        {"int64", {Kind::integer, 1, false, true}}, {"uint64", {Kind::integer, 1, false, true}},
        {"int2", {Kind::integer, 2}}, {"int3", {Kind::integer, 3}}, {"int4", {Kind::integer, 4}},
        {"half", {Kind::floating, 1}}, {"float", {Kind::floating, 1}},
        {"half2", {Kind::floating, 2}}, {"half3", {Kind::floating, 3}}, {"half4", {Kind::floating, 4}},
        {"float2", {Kind::floating, 2}}, {"float3", {Kind::floating, 3}}, {"float4", {Kind::floating, 4}},
        {"color3f", {Kind::floating, 3}}, {"color3h", {Kind::floating, 3}},
        {"color4f", {Kind::floating, 4}}, {"color4h", {Kind::floating, 4}},
        {"normal3f", {Kind::floating, 3}}, {"normal3h", {Kind::floating, 3}},
        {"point3f", {Kind::floating, 3}}, {"point3h", {Kind::floating, 3}},
        {"vector3f", {Kind::floating, 3}}, {"vector3h", {Kind::floating, 3}},
        {"texCoord2f", {Kind::floating, 2}}, {"texCoord2h", {Kind::floating, 2}},
        {"texCoord3f", {Kind::floating, 3}}, {"texCoord3h", {Kind::floating, 3}},
        {"quatf", {Kind::floating, 4, true}}, {"quath", {Kind::floating, 4, true}},
        {"double", {Kind::doubling, 1}}, {"timecode", {Kind::doubling, 1}},
        {"double2", {Kind::doubling, 2}}, {"double3", {Kind::doubling, 3}}, {"double4", {Kind::doubling, 4}},
        {"color3d", {Kind::doubling, 3}}, {"color4d", {Kind::doubling, 4}},
        {"normal3d", {Kind::doubling, 3}}, {"point3d", {Kind::doubling, 3}}, {"vector3d", {Kind::doubling, 3}},
        {"texCoord2d", {Kind::doubling, 2}}, {"texCoord3d", {Kind::doubling, 3}},
        {"quatd", {Kind::doubling, 4, true}},
        {"matrix2d", {Kind::doubling, 4}}, {"matrix3d", {Kind::doubling, 9}},
        {"matrix4d", {Kind::doubling, 16}}, {"frame4d", {Kind::doubling, 16}},
        {"token", {Kind::token, 1}}, {"string", {Kind::string, 1}}, {"asset", {Kind::asset, 1}},
        {"dictionary", {Kind::dictionary, 1}},
    };
    const auto it = types.find(name);
    return it == types.end() ? Type{} : it->second;
}

bool UsdaValueReader::expect(char c) {
    if (lexer_.next().is(c)) return true;
    return lexer_.reject(std::string("expected '") + c + "'");
}

bool UsdaValueReader::accept(char c) {
    if (!lexer_.peek().is(c)) return false;
    lexer_.next();
    return true;
}

template <class F>
bool UsdaValueReader::readList(F&& element) {
    if (!expect('[')) return false;
    while (!accept(']')) {
        if (!element()) return false;
        if (!accept(',') && !lexer_.peek().is(']')) return lexer_.reject("expected ',' or ']' in list");
    }
    return true;
}

bool UsdaValueReader::readNumber(double& out) {
    const UsdaToken token = lexer_.next();
    if (token.kind != UsdaTokenKind::number && !token.isWord("inf") && !token.isWord("nan"))
        return lexer_.reject("expected a number");
    std::string_view text = token.text;
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), out);
    if (ec == std::errc::result_out_of_range) return lexer_.reject("number out of range: " + std::string(text));
    if (ec != std::errc() || end != text.data() + text.size())
        return lexer_.reject("malformed number: " + std::string(token.text));
    return true;
}

bool UsdaValueReader::readInteger(std::int64_t& out) {
    const UsdaToken& token = lexer_.peek();
    if (token.kind == UsdaTokenKind::number) {
        std::string_view text = token.text;
        if (!text.empty() && text.front() == '+') text.remove_prefix(1);
        const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), out);
        if (ec == std::errc() && end == text.data() + text.size()) {
            lexer_.next();
            return true;
        }
    }
    // Integers written as "1.0" or "1e3" are read through double and must be whole.
    double value = 0;
    if (!readNumber(value)) return false;
    if (!std::isfinite(value) || std::trunc(value) != value || std::fabs(value) > 9.0e18)
        return lexer_.reject("not an integer in range");
    out = static_cast<std::int64_t>(value);
    return true;
}

bool UsdaValueReader::readBool(bool& out) {
    const UsdaToken& token = lexer_.peek();
    if (token.isWord("true") || token.isWord("false")) {
        out = lexer_.next().text == "true";
        return true;
    }
    std::int64_t value = 0;
    if (!readInteger(value)) return false;
    out = value != 0;
    return true;
}

bool UsdaValueReader::readString(std::string& out) {
    UsdaToken token = lexer_.next();
    if (token.kind != UsdaTokenKind::string) return lexer_.reject("expected a quoted string");
    out = std::move(token.value);
    return true;
}

bool UsdaValueReader::readStrings(std::vector<std::string>& out) {
    if (!lexer_.peek().is('[')) return readString(out.emplace_back());
    return readList([&] { return readString(out.emplace_back()); });
}

bool UsdaValueReader::readPaths(PathArray& out) {
    const auto one = [&] {
        UsdaToken token = lexer_.next();
        if (token.kind != UsdaTokenKind::path) return lexer_.reject("expected a path");
        out.push_back(std::move(token.value));
        return true;
    };
    if (lexer_.peek().isWord("None")) {
        lexer_.next();
        return true;
    }
    return lexer_.peek().is('[') ? readList(one) : one();
}

bool UsdaValueReader::readTuple(std::vector<double>& out, int depth) {
    if (depth > maxNesting) return lexer_.reject("values nested too deeply");
    if (!accept('(')) return readNumber(out.emplace_back());
    while (!accept(')')) {
        if (!readTuple(out, depth + 1)) return false;
        if (!accept(',') && !lexer_.peek().is(')')) return lexer_.reject("expected ',' or ')' in tuple");
    }
    return true;
}

bool UsdaValueReader::readElement(const Type& type, Value& out, int depth) {
    switch (type.kind) {
    case Kind::boolean: {
        bool value = false;
        if (!readBool(value)) return false;
        if (auto* array = std::get_if<IntArray>(&out.data)) std::get<IntArray::Narrow>(array->values).push_back(value ? 1 : 0);
        else out.data = value;
        return true;
    }
    case Kind::token:
    case Kind::string:
    case Kind::asset: {
        UsdaToken token = lexer_.next();
        const bool ok = type.kind == Kind::asset ? token.kind == UsdaTokenKind::asset
                                                 : token.kind == UsdaTokenKind::string;
        if (!ok) return lexer_.reject(type.kind == Kind::asset ? "expected an asset path" : "expected a quoted string");
        if (auto* tokens = std::get_if<TokenArray>(&out.data)) tokens->push_back(Token{std::move(token.value)});
        else if (auto* strings = std::get_if<StringArray>(&out.data)) strings->values.push_back(std::move(token.value));
        else if (type.kind == Kind::token) out.data = Token{std::move(token.value)};
        else if (type.kind == Kind::asset) out.data = AssetPath{std::move(token.value)};
        else out.data = std::move(token.value);
        return true;
    }
    case Kind::integer: {
        auto& values = std::get<IntArray>(out.data).values;
        const auto add = [&](std::int64_t v) {
            if (auto* wide = std::get_if<IntArray::Wide>(&values)) wide->push_back(v);
            else if (std::in_range<std::int32_t>(v)) std::get<IntArray::Narrow>(values).push_back(static_cast<std::int32_t>(v));
            else return lexer_.reject("integer out of range for a 32-bit type");
            return true;
        };
        if (type.width == 1) {
            std::int64_t value = 0;
            return readInteger(value) && add(value);
        }
        std::vector<double> tuple;
        if (!readTuple(tuple, depth)) return false;
        if (tuple.size() != static_cast<std::size_t>(type.width)) return lexer_.reject("wrong number of components");
        for (double v : tuple) {
            if (!std::isfinite(v) || std::fabs(v) > 9.0e18) return lexer_.reject("not an integer in range");
            if (!add(static_cast<std::int64_t>(v))) return false;
        }
        return true;
    }
    case Kind::floating:
    case Kind::doubling: {
        std::vector<double> tuple;
        tuple.reserve(static_cast<std::size_t>(type.width));
        if (!readTuple(tuple, depth)) return false;
        if (tuple.size() != static_cast<std::size_t>(type.width)) return lexer_.reject("wrong number of components");
        if (type.quaternion) std::rotate(tuple.begin(), tuple.begin() + 1, tuple.end());
        if (auto* floats = std::get_if<FloatArray>(&out.data)) {
            for (double v : tuple) {
                if (std::isfinite(v) && std::fabs(v) > 3.4028234663852886e38)
                    return lexer_.reject("number out of range for float");
                floats->values.push_back(static_cast<float>(v));
            }
        } else {
            auto& doubles = std::get<DoubleArray>(out.data).values;
            doubles.insert(doubles.end(), tuple.begin(), tuple.end());
        }
        return true;
    }
    case Kind::dictionary:
    case Kind::unknown:
        break;
    }
    return lexer_.reject("unreadable value");
}

bool UsdaValueReader::readScalarOrArray(const Type& type, bool isArray, Value& out, int depth) {
    switch (type.kind) {
    case Kind::boolean: if (isArray) out.data = IntArray{}; break;
    case Kind::integer:
        out.data = type.wide ? IntArray{IntArray::Wide{}, isArray} : IntArray{IntArray::Narrow{}, isArray};
        break;
    case Kind::floating: out.data = FloatArray{type.width, {}, isArray}; break;
    case Kind::doubling: out.data = DoubleArray{type.width, {}, isArray}; break;
    case Kind::token: if (isArray) out.data = TokenArray{}; break;
    case Kind::string:
    case Kind::asset: if (isArray) out.data = StringArray{}; break;
    case Kind::dictionary:
    case Kind::unknown: break;
    }
    if (!isArray) return readElement(type, out, depth);
    return readList([&] { return readElement(type, out, depth + 1); });
}

bool UsdaValueReader::read(std::string_view typeName, bool isArray, Value& out, int depth) {
    if (depth > maxNesting) return lexer_.reject("values nested too deeply");
    if (lexer_.peek().isWord("None")) {
        lexer_.next();
        out = Value{};
        return true;
    }
    const Type type = typeOf(typeName);
    if (type.kind == Kind::unknown || (type.kind == Kind::dictionary && isArray)) {
        out = Value{};
        return skip();
    }
    if (type.kind == Kind::dictionary) return readDictionary(out, depth + 1);
    return readScalarOrArray(type, isArray, out, depth);
}

bool UsdaValueReader::readDictionary(Value& out, int depth) {
    if (depth > maxNesting) return lexer_.reject("dictionaries nested too deeply");
    if (!expect('{')) return false;
    Dictionary dictionary;
    while (!accept('}')) {
        if (accept(';') || accept(',')) continue;
        const UsdaToken type = lexer_.next();
        if (type.kind != UsdaTokenKind::identifier) return lexer_.reject("expected a type in dictionary");
        const bool isArray = accept('[');
        if (isArray && !expect(']')) return false;
        UsdaToken key = lexer_.next();
        if (key.kind != UsdaTokenKind::identifier && key.kind != UsdaTokenKind::string)
            return lexer_.reject("expected a key in dictionary");
        if (!expect('=')) return false;
        auto value = std::make_shared<Value>();
        if (!read(type.text, isArray, *value, depth + 1)) return false;
        dictionary.entries[key.kind == UsdaTokenKind::string ? key.value : std::string(key.text)] = std::move(value);
    }
    out.data = std::move(dictionary);
    return true;
}

bool UsdaValueReader::readTimeSamples(std::string_view typeName, bool isArray, Value& out) {
    if (!expect('{')) return false;
    TimeSamples samples;
    while (!accept('}')) {
        double time = 0;
        if (!readNumber(time) || !expect(':')) return false;
        auto value = std::make_shared<Value>();
        if (!read(typeName, isArray, *value)) return false;
        samples.samples.emplace_back(time, std::move(value));
        if (!accept(',') && !lexer_.peek().is('}')) return lexer_.reject("expected ',' or '}' in time samples");
    }
    out.data = std::move(samples);
    return true;
}

// Skips a value of any shape by counting brackets (no recursion, so any nesting depth is
// safe). An asset path followed by a prim path (a reference) is one value.
bool UsdaValueReader::skip() {
    int depth = 0;
    UsdaToken token;
    do {
        token = lexer_.next();
        if (token.kind == UsdaTokenKind::end) return lexer_.reject("unexpected end of layer in a value");
        if (token.is('(') || token.is('[') || token.is('{')) ++depth;
        else if (token.is(')') || token.is(']') || token.is('}')) {
            if (depth == 0) return lexer_.reject("unbalanced brackets in a value");
            --depth;
        }
    } while (depth > 0);
    if (token.kind == UsdaTokenKind::asset && lexer_.peek().kind == UsdaTokenKind::path) lexer_.next();
    return true;
}

} // namespace orvanta::import::usd
