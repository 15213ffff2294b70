#pragma once

// What a death test expects of a fatal spot: the whole line that fatalError prints for it.
#include <string>
#include <string_view>

namespace kovena::testing {

// A death-test pattern that matches the line "kovena: fatal error: <text>" and nothing longer:
// an unrelated crash, or another spot whose text merely starts the same, cannot pass for it.
inline std::string fatalLine(std::string_view text)
{
    std::string pattern = "kovena: fatal error: ";
    for (const char c : text) {
        if (std::string_view(R"(\^$.|?*+()[]{})").find(c) != std::string_view::npos)
            pattern += '\\';
        pattern += c;
    }
    return pattern + '\n';
}

} // namespace kovena::testing
