#include "sandbox/HtmlPage.h"

namespace kovena::sandbox::html {

namespace {

const char *kStyle = R"css(
body { margin: 0; background: #eef1f5; font: 16px/1.4 sans-serif; color: #1d2733; }
main { max-width: 360px; margin: 32px auto; padding: 24px; background: #fff;
       border-radius: 12px; box-shadow: 0 2px 10px rgba(0, 0, 0, .08); }
header { font-size: 13px; letter-spacing: .08em; text-transform: uppercase; color: #6b7785; }
h1 { font-size: 20px; margin: 8px 0 16px; }
dl { display: grid; grid-template-columns: auto 1fr; gap: 8px 16px; margin: 0 0 24px; }
dt { color: #6b7785; }
dd { margin: 0; text-align: right; font-weight: 600; }
form { display: flex; gap: 12px; }
button { flex: 1; padding: 12px; border: 0; border-radius: 8px; font-size: 16px; cursor: pointer; }
#approve { background: #1f7a4d; color: #fff; }
#decline { background: #e4e8ee; color: #1d2733; }
p.note { color: #6b7785; }
)css";

} // namespace

std::string escape(const std::string &text)
{
    std::string out;
    out.reserve(text.size());
    for (char c : text) {
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += "&quot;";
            break;
        case '\'':
            out += "&#39;";
            break;
        default:
            out += c;
        }
    }
    return out;
}

std::string page(const std::string &title, const std::string &content)
{
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>"
        + escape(title) + " - Kovena Sandbox Bank</title>\n<style>" + kStyle
        + "</style>\n</head>\n<body>\n<main>\n<header>Kovena Sandbox Bank</header>\n<h1>" + escape(title)
        + "</h1>\n" + content + "</main>\n</body>\n</html>\n";
}

std::string message(const std::string &title, const std::string &text)
{
    return page(title, "<p id=\"message\">" + escape(text) + "</p>\n");
}

} // namespace kovena::sandbox::html
