#pragma once
// Asserts that an import step failed with a ModelImportError of `code` whose message
// mentions `fragment`.

#include "core/Result.h"
#include "import/ImportError.h"

#include <gtest/gtest.h>

#include <string>

namespace orvanta::testing {

template <class T>
void expectImportError(const core::Result<T>& result, import::ImportErrorCode code, const std::string& fragment) {
    ASSERT_FALSE(result.ok());
    EXPECT_EQ(result.error().domain(), import::importErrorDomain);
    EXPECT_EQ(result.error().code(), static_cast<int>(code)) << result.error().localizedDescription();
    EXPECT_NE(result.error().localizedDescription().find(fragment), std::string::npos)
        << result.error().localizedDescription();
}

} // namespace orvanta::testing
