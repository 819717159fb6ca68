#pragma once
// Reads the values of a USDA layer from its tokens, converted by their declared type:
// numbers keep the precision of the type (float-based types become FloatArray, double-based
// ones DoubleArray), tuples are flattened to `width` components (16 for matrix4d, with
// quaternions reordered from the text's (real, i, j, k) to (i, j, k, real)), tokens,
// strings and asset paths become their own types, `None` becomes an empty Value. Values of
// types it does not know are skipped and read as empty. Errors go to the lexer.
// Thread: one reader belongs to the thread of its lexer.

#include "import/usd/UsdaLexer.h"
#include "import/usd/UsdValue.h"

#include <string_view>
#include <vector>

namespace orvanta::import::usd {

class UsdaValueReader {
public:
    // Deepest nesting of brackets, dictionaries and prims a layer may use.
    static constexpr int maxNesting = 64;

    // Thread: the lexer's thread.
    explicit UsdaValueReader(UsdaLexer& lexer) : lexer_(lexer) {}

    // Reads one value of type `typeName` ("float3", "token", ...; `isArray` for "[]").
    // Thread: the lexer's thread.
    bool read(std::string_view typeName, bool isArray, Value& out, int depth = 0);
    // Reads `{ time: value, ... }`. Thread: the lexer's thread.
    bool readTimeSamples(std::string_view typeName, bool isArray, Value& out);
    // Reads `{ type name = value ... }`. Thread: the lexer's thread.
    bool readDictionary(Value& out, int depth);
    // Reads one number (also inf, -inf, nan). Thread: the lexer's thread.
    bool readNumber(double& out);
    // Reads 0, 1, true or false. Thread: the lexer's thread.
    bool readBool(bool& out);
    // Reads a quoted string. Thread: the lexer's thread.
    bool readString(std::string& out);
    // Reads one path or a bracketed list of paths (or None, giving no paths).
    // Thread: the lexer's thread.
    bool readPaths(PathArray& out);
    // Reads one quoted string or a bracketed list of them. Thread: the lexer's thread.
    bool readStrings(std::vector<std::string>& out);
    // Skips one value of any shape. Thread: the lexer's thread.
    bool skip();

    // Consumes the punctuation `c` or fails. Thread: the lexer's thread.
    bool expect(char c);
    // Consumes the punctuation `c` when it is next. Thread: the lexer's thread.
    bool accept(char c);

private:
    enum class Kind { boolean, integer, floating, doubling, token, string, asset, dictionary, unknown };
    struct Type {
        Kind kind = Kind::unknown;
        int width = 1;
        bool quaternion = false;
        bool wide = false;  // integers kept in 64 bits (uint, int64, uint64)
    };
    static Type typeOf(std::string_view name);

    bool readScalarOrArray(const Type& type, bool isArray, Value& out, int depth);
    bool readElement(const Type& type, Value& out, int depth);
    bool readTuple(std::vector<double>& out, int depth);
    bool readInteger(std::int64_t& out);
    template <class F> bool readList(F&& element);

    UsdaLexer& lexer_;
};

} // namespace orvanta::import::usd
