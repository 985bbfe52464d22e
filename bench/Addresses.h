// Addresses for measuring.
#pragma once

#include <cstddef>
#include <string>

// An accepted address of a given length, 10 bytes or more: a third of it the local part, then labels
// of up to 20 bytes.
inline std::string MakeAddress(std::size_t cb)
{
    std::string address(cb, 'a');
    const std::size_t nAt = cb / 3;
    address[nAt] = '@';
    for (std::size_t n = nAt + 4; n < cb - 1; n += 21)
        address[n] = '.';
    return address;
}
