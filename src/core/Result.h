#pragma once
// A value or the Error that prevented it. Expected failures are values, never exceptions
// that cross a layer boundary.
// Thread: a value type.

#include "core/Error.h"

#include <cassert>
#include <utility>
#include <variant>

namespace orvanta::core {

template <class T>
class Result {
public:
    Result(T value) : state_(std::move(value)) {}
    Result(Error error) : state_(std::move(error)) {}

    bool ok() const { return std::holds_alternative<T>(state_); }
    explicit operator bool() const { return ok(); }

    T& value() & { assert(ok()); return std::get<T>(state_); }
    const T& value() const& { assert(ok()); return std::get<T>(state_); }
    T&& value() && { assert(ok()); return std::get<T>(std::move(state_)); }
    const Error& error() const { assert(!ok()); return std::get<Error>(state_); }

    T* operator->() { return &value(); }
    const T* operator->() const { return &value(); }

private:
    std::variant<T, Error> state_;
};

} // namespace orvanta::core
