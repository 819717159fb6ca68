#include "import/usd/UsdStagePath.h"

#include <algorithm>
#include <vector>

namespace orvanta::import::usd {

std::string UsdStagePath::child(std::string_view parent, std::string_view name) {
    std::string path(parent);
    if (path.empty() || (path.back() != '/' && path.back() != '}')) path += '/';
    path += name;
    return path;
}

std::string UsdStagePath::property(std::string_view prim, std::string_view name) {
    std::string path(prim);
    path += '.';
    path += name;
    return path;
}

std::string UsdStagePath::variant(std::string_view prim, std::string_view set, std::string_view variant) {
    std::string path(prim);
    path += '{';
    path += set;
    path += '=';
    path += variant;
    path += '}';
    return path;
}

std::string_view UsdStagePath::primOf(std::string_view path) {
    // Property names may hold '.' only after the first one (none do in practice); variant
    // names never hold '.'.
    const std::size_t dot = path.find('.');
    return dot == std::string_view::npos ? path : path.substr(0, dot);
}

std::string_view UsdStagePath::propertyNameOf(std::string_view path) {
    const std::size_t dot = path.find('.');
    return dot == std::string_view::npos ? std::string_view() : path.substr(dot + 1);
}

std::string_view UsdStagePath::name(std::string_view primPath) {
    const std::size_t slash = primPath.find_last_of("/}");
    return slash == std::string_view::npos ? primPath : primPath.substr(slash + 1);
}

std::optional<std::string> UsdStagePath::absolute(std::string_view anchor, std::string_view path) {
    if (!path.empty() && path.front() == '/') return std::string(path);
    // The anchor's prim names with variant selections dropped: "/A{v=x}B" -> A, B.
    std::string flat;
    int braces = 0;
    for (char c : primOf(anchor)) {
        if (c == '{' && braces++ == 0) flat += '/';
        if (braces == 0) flat += c;
        if (c == '}' && braces > 0) --braces;
    }
    std::vector<std::string_view> names;
    const auto split = [&names](std::string_view text) {
        std::size_t start = 0;
        while (start <= text.size()) {
            std::size_t end = text.find('/', start);
            if (end == std::string_view::npos) end = text.size();
            const std::string_view element = text.substr(start, end - start);
            if (element == "..") {
                if (names.empty()) return false;
                names.pop_back();
            } else if (!element.empty() && element != ".") {
                names.push_back(element);
            }
            start = end + 1;
        }
        return true;
    };
    // The property part starts at the first '.' that ends a name, not at "." or "..".
    std::size_t dot = 0;
    while ((dot = path.find('.', dot)) != std::string_view::npos && (dot == 0 || path[dot - 1] == '/' || path[dot - 1] == '.'))
        ++dot;
    const std::string_view primPart = path.substr(0, std::min(dot, path.size()));
    if (!split(flat) || !split(primPart)) return std::nullopt;
    std::string result;
    for (std::string_view n : names) {
        result += '/';
        result += n;
    }
    if (result.empty()) result = "/";
    result += path.substr(primPart.size());
    return result;
}

std::optional<std::string> UsdStagePath::reroot(std::string_view path, std::string_view from, std::string_view to) {
    if (from == to) return std::string(path);
    if (path.substr(0, from.size()) != from) return std::nullopt;
    const std::string_view rest = path.substr(from.size());
    if (!rest.empty() && rest.front() != '/' && rest.front() != '.') return std::nullopt;
    return std::string(to) + std::string(rest);
}

} // namespace orvanta::import::usd
