// Text: makes what test programs print fit for a report, which is UTF-8 whatever they print.
#pragma once

#include <string>

namespace selftest
{
// Well-formed UTF-8 that XML can hold: all bytes that are not stand as \xNN.
std::string Printable(const std::string& bytes);

std::string XmlEscaped(const std::string& text);

// All occurrences, which may be in upper or lower case as far as ASCII goes.
std::string ReplaceAll(std::string text, const std::string& what, const std::string& by);
} // namespace selftest
