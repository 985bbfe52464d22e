// Machine: what the self-test runs on, as far as it may explain an outcome. No names of people or
// machines.
#pragma once

#include "selftest/Report.h"

#include <string>

namespace selftest
{
Facts DescribeMachine();
// Its size and SHA-256; the file is the kit's when both are the same.
std::string DescribeFile(const std::wstring& path);
} // namespace selftest
