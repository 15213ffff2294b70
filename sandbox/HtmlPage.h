#pragma once

#include <string>

// The sandbox bank's plain HTML pages: one frame and style for all of them.
namespace kovena::sandbox::html {

std::string escape(const std::string &text);
// A complete page: the frame with `title` as its heading around `content`, which is HTML.
std::string page(const std::string &title, const std::string &content);
// A page that says what went wrong, with nothing to press.
std::string message(const std::string &title, const std::string &text);

} // namespace kovena::sandbox::html
