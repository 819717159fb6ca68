#pragma once
// Splits the text of a USDA layer into tokens: identifiers (namespaced names such as
// "xformOp:translate:pivot" are one token), numbers, quoted strings (single, double and
// triple quotes, with escapes decoded), asset paths (@a.png@ and @@@a.png@@@), prim and
// property paths (</A/B.c>) and single punctuation characters. '#' comments and white space
// are skipped. The first lexing error is kept and every later token is `end`.
// Thread: one lexer belongs to one thread; it reads text it does not own.

#include <optional>
#include <string>
#include <string_view>

namespace orvanta::import::usd {

enum class UsdaTokenKind { end, identifier, number, string, asset, path, punct };

struct UsdaToken {
    UsdaTokenKind kind = UsdaTokenKind::end;
    std::string_view text;   // the source text of identifiers, numbers and punctuation
    std::string value;       // the decoded contents of strings, asset paths and paths
    int line = 0;

    bool is(char c) const { return kind == UsdaTokenKind::punct && text.size() == 1 && text[0] == c; }
    bool isWord(std::string_view word) const { return kind == UsdaTokenKind::identifier && text == word; }
};

class UsdaLexer {
public:
    // `text` must outlive the lexer. Lexing starts at `line` (1-based) for messages.
    // Thread: the owning thread.
    UsdaLexer(std::string_view text, int line);

    // The next token, without consuming it. Thread: the owning thread.
    const UsdaToken& peek();
    // Consumes and returns the next token. Thread: the owning thread.
    UsdaToken next();

    // The first malformed-token message ("line 12: unterminated string"), if any.
    // Thread: the owning thread.
    const std::optional<std::string>& error() const { return error_; }
    // The line of the next token, for messages. Thread: the owning thread.
    int line();
    // Records `message` as the error (unless one is already kept) and stops lexing; always
    // returns false so grammar code can `return lexer.reject(...)`. Thread: the owning thread.
    bool reject(const std::string& message);

private:
    UsdaToken scan();
    void skipSpaceAndComments();
    UsdaToken fail(const std::string& message);
    UsdaToken scanQuoted();
    UsdaToken scanAsset();
    UsdaToken scanPath();
    UsdaToken scanNumber();
    UsdaToken scanIdentifier();
    bool decodeEscape(std::string& out);

    std::string_view text_;
    std::size_t pos_ = 0;
    int line_ = 1;
    std::optional<UsdaToken> peeked_;
    std::optional<std::string> error_;
};

} // namespace orvanta::import::usd
