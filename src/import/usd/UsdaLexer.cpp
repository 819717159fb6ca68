#include "import/usd/UsdaLexer.h"

namespace orvanta::import::usd {

namespace {

bool isIdentifierStart(char c) {
    const auto u = static_cast<unsigned char>(c);
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || u >= 0x80;
}

bool isIdentifierPart(char c) {
    return isIdentifierStart(c) || (c >= '0' && c <= '9') || c == ':';
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

} // namespace

UsdaLexer::UsdaLexer(std::string_view text, int line) : text_(text), line_(line) {}

const UsdaToken& UsdaLexer::peek() {
    if (!peeked_) peeked_ = scan();
    return *peeked_;
}

UsdaToken UsdaLexer::next() {
    if (peeked_) {
        UsdaToken token = std::move(*peeked_);
        peeked_.reset();
        return token;
    }
    return scan();
}

int UsdaLexer::line() { return peek().line; }

bool UsdaLexer::reject(const std::string& message) {
    if (!error_) error_ = "line " + std::to_string(peeked_ ? peeked_->line : line_) + ": " + message;
    pos_ = text_.size();
    peeked_ = UsdaToken{UsdaTokenKind::end, {}, {}, line_};
    return false;
}

UsdaToken UsdaLexer::fail(const std::string& message) {
    if (!error_) error_ = "line " + std::to_string(line_) + ": " + message;
    pos_ = text_.size();
    return UsdaToken{UsdaTokenKind::end, {}, {}, line_};
}

void UsdaLexer::skipSpaceAndComments() {
    while (pos_ < text_.size()) {
        const char c = text_[pos_];
        if (c == '\n') {
            ++line_;
            ++pos_;
        } else if (c == ' ' || c == '\t' || c == '\r' || c == '\f' || c == '\v') {
            ++pos_;
        } else if (c == '#') {
            while (pos_ < text_.size() && text_[pos_] != '\n') ++pos_;
        } else {
            break;
        }
    }
}

UsdaToken UsdaLexer::scan() {
    skipSpaceAndComments();
    if (error_ || pos_ >= text_.size()) return UsdaToken{UsdaTokenKind::end, {}, {}, line_};
    const char c = text_[pos_];
    if (c == '"' || c == '\'') return scanQuoted();
    if (c == '@') return scanAsset();
    if (c == '<') return scanPath();
    const char after = pos_ + 1 < text_.size() ? text_[pos_ + 1] : '\0';
    if (isDigit(c) || ((c == '-' || c == '+' || c == '.') && (isDigit(after) || after == '.')) ||
        (c == '-' && isIdentifierStart(after)))
        return scanNumber();
    if (isIdentifierStart(c)) return scanIdentifier();
    if (static_cast<unsigned char>(c) < 0x20 && c != '\t') return fail("unexpected control character");
    UsdaToken token{UsdaTokenKind::punct, text_.substr(pos_, 1), {}, line_};
    ++pos_;
    return token;
}

UsdaToken UsdaLexer::scanIdentifier() {
    const std::size_t start = pos_;
    while (pos_ < text_.size() && isIdentifierPart(text_[pos_])) ++pos_;
    return UsdaToken{UsdaTokenKind::identifier, text_.substr(start, pos_ - start), {}, line_};
}

// Numbers are kept as text and converted by the reader that knows the declared type.
// "-inf" lexes as one number token; "inf" and "nan" lex as identifiers.
UsdaToken UsdaLexer::scanNumber() {
    const std::size_t start = pos_;
    if (text_[pos_] == '-' || text_[pos_] == '+') ++pos_;
    if (pos_ < text_.size() && isIdentifierStart(text_[pos_])) {
        while (pos_ < text_.size() && isIdentifierPart(text_[pos_])) ++pos_;
    } else {
        while (pos_ < text_.size()) {
            const char c = text_[pos_];
            const bool exponentSign = (c == '-' || c == '+') && (text_[pos_ - 1] == 'e' || text_[pos_ - 1] == 'E');
            if (!isDigit(c) && c != '.' && c != 'e' && c != 'E' && !exponentSign) break;
            ++pos_;
        }
    }
    return UsdaToken{UsdaTokenKind::number, text_.substr(start, pos_ - start), {}, line_};
}

bool UsdaLexer::decodeEscape(std::string& out) {
    // pos_ is on the character after the backslash.
    if (pos_ >= text_.size()) return false;
    const char c = text_[pos_++];
    switch (c) {
    case 'n': out += '\n'; return true;
    case 't': out += '\t'; return true;
    case 'r': out += '\r'; return true;
    case 'a': out += '\a'; return true;
    case 'b': out += '\b'; return true;
    case 'f': out += '\f'; return true;
    case 'v': out += '\v'; return true;
    case 'x': {
        int value = 0;
        int digits = 0;
        while (digits < 2 && pos_ < text_.size() && hexDigit(text_[pos_]) >= 0) {
            value = value * 16 + hexDigit(text_[pos_++]);
            ++digits;
        }
        if (digits == 0) return false;
        out += static_cast<char>(value);
        return true;
    }
    default:
        if (c >= '0' && c <= '7') {
            int value = c - '0';
            for (int digits = 1; digits < 3 && pos_ < text_.size() && text_[pos_] >= '0' && text_[pos_] <= '7'; ++digits)
                value = value * 8 + (text_[pos_++] - '0');
            out += static_cast<char>(value & 0xff);
            return true;
        }
        if (c == '\n') ++line_;
        out += c;  // \\, \", \' and any other escaped character stand for themselves
        return true;
    }
}

UsdaToken UsdaLexer::scanQuoted() {
    const int startLine = line_;
    const char quote = text_[pos_];
    const bool triple = text_.substr(pos_, 3) == std::string(3, quote);
    pos_ += triple ? 3 : 1;
    std::string value;
    while (true) {
        if (pos_ >= text_.size()) return fail("unterminated string");
        const char c = text_[pos_];
        if (c == '\\') {
            ++pos_;
            if (!decodeEscape(value)) return fail("bad escape in string");
            continue;
        }
        if (c == quote && (!triple || text_.substr(pos_, 3) == std::string(3, quote))) {
            pos_ += triple ? 3 : 1;
            return UsdaToken{UsdaTokenKind::string, {}, std::move(value), startLine};
        }
        if (c == '\n') {
            if (!triple) return fail("line break in string");
            ++line_;
        }
        value += c;
        ++pos_;
    }
}

UsdaToken UsdaLexer::scanAsset() {
    const int startLine = line_;
    if (text_.substr(pos_, 3) == "@@@") {
        pos_ += 3;
        std::string value;
        while (pos_ < text_.size()) {
            if (text_.substr(pos_, 4) == "\\@@@") {
                value += "@@@";
                pos_ += 4;
            } else if (text_.substr(pos_, 3) == "@@@") {
                pos_ += 3;
                return UsdaToken{UsdaTokenKind::asset, {}, std::move(value), startLine};
            } else {
                if (text_[pos_] == '\n') return fail("line break in asset path");
                value += text_[pos_++];
            }
        }
        return fail("unterminated asset path");
    }
    const std::size_t end = text_.find_first_of("@\n", pos_ + 1);
    if (end == std::string_view::npos || text_[end] != '@') return fail("unterminated asset path");
    UsdaToken token{UsdaTokenKind::asset, {}, std::string(text_.substr(pos_ + 1, end - pos_ - 1)), startLine};
    pos_ = end + 1;
    return token;
}

UsdaToken UsdaLexer::scanPath() {
    const std::size_t end = text_.find_first_of(">\n", pos_ + 1);
    if (end == std::string_view::npos || text_[end] != '>') return fail("unterminated path");
    UsdaToken token{UsdaTokenKind::path, {}, std::string(text_.substr(pos_ + 1, end - pos_ - 1)), line_};
    pos_ = end + 1;
    return token;
}

} // namespace orvanta::import::usd
