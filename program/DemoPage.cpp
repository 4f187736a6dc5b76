#include "DemoPage.h"

#include "varnet/Picture.h"

using varnet::EscapedMarkup;

namespace {

// Colours follow what the reader's system prefers. Pictures keep a light ground: their lines are dark.
constexpr char kStyle[] = R"css(
:root {
  color-scheme: light dark;
  --ground: #fbfaf7; --card: #fff; --ink: #1e2a35; --soft: #5b6875; --rule: #dfe3e6; --accent: #22638f;
}
@media (prefers-color-scheme: dark) {
  :root {
    --ground: #14191f; --card: #1c232b; --ink: #e6eaee; --soft: #9aa7b3; --rule: #323c46; --accent: #7fb8e0;
  }
}
* { box-sizing: border-box; }
body {
  margin: 0; background: var(--ground); color: var(--ink);
  font: 16px/1.55 system-ui, -apple-system, "Segoe UI", Roboto, "DejaVu Sans", sans-serif;
}
header, main, footer { max-width: 74rem; margin: 0 auto; padding: 0 1.25rem; }
header { padding-top: 3rem; }
h1 { margin: 0; font-size: clamp(1.7rem, 4vw, 2.5rem); line-height: 1.15; letter-spacing: -.02em; }
header p { max-width: 46rem; color: var(--soft); font-size: 1.1rem; }
section { padding: 1.5rem 0; border-top: 1px solid var(--rule); }
h2 { margin: 0 0 .25rem; font-size: 1.35rem; }
section > p { max-width: 46rem; margin: .25rem 0 1rem; }
.row { display: grid; gap: 1.25rem; grid-template-columns: repeat(auto-fit, minmax(min(25rem, 100%), 1fr)); margin-top: 1rem; }
figure, .card { margin: 0; background: var(--card); border: 1px solid var(--rule); border-radius: .6rem; overflow: hidden; }
figure a { display: block; background: #fff; padding: .75rem; }
figure img { display: block; width: 100%; height: 22rem; object-fit: contain; }
figcaption { padding: .6rem .9rem .8rem; color: var(--soft); font-size: .92rem; border-top: 1px solid var(--rule); }
.wide { grid-column: 1 / -1; }
.card { overflow-x: auto; padding: .2rem .9rem .6rem; }
table { border-collapse: collapse; width: 100%; font-variant-numeric: tabular-nums; font-size: .95rem; }
caption { text-align: left; font-weight: 600; padding: .5rem 0; }
th, td { text-align: left; vertical-align: top; padding: .35rem .8rem .35rem 0; border-top: 1px solid var(--rule); }
th { font-weight: 500; color: var(--soft); }
td:last-child { padding-right: 0; }
a { color: var(--accent); }
iframe { display: block; width: 100%; height: min(46rem, 85vh); border: 1px solid var(--rule); border-radius: .6rem; }
.files { list-style: none; margin: 1rem 0 0; padding: 0; columns: 15rem; }
footer { padding-bottom: 3rem; color: var(--soft); border-top: 1px solid var(--rule); padding-top: 1rem; }
)css";

std::string Element(char const* pName, std::string const& text) {
    std::string element = "<";
    element += pName;
    element += '>';
    element += EscapedMarkup(text);
    element += "</";
    element += pName;
    return element += '>';
}

}  // namespace

DemoPage::DemoPage(std::string const& title, std::string const& lead) : m_Title(title) {
    m_Body = "<header>\n" + Element("h1", title) + "\n" + Element("p", lead) + "\n</header>\n<main>\n";
}

void DemoPage::BeginRow(Row row) {
    if (m_Row == row) return;
    if (m_Row != Row::kNone) m_Body += "</div>\n";
    if (row != Row::kNone) m_Body += "<div class=\"row\">\n";
    m_Row = row;
}

void DemoPage::BeginSection(std::string const& title, std::string const& text) {
    BeginRow(Row::kNone);
    if (m_Body.find("<section>") != std::string::npos) m_Body += "</section>\n";
    m_Body += "<section>\n" + Element("h2", title) + "\n" + Element("p", text) + "\n";
}

void DemoPage::AddPicture(std::string const& file, std::string const& alternative,
                          std::string const& caption) {
    BeginRow(Row::kPictures);
    m_Body += "<figure><a href=\"";
    m_Body += EscapedMarkup(file);
    m_Body += "\"><img src=\"";
    m_Body += EscapedMarkup(file);
    m_Body += "\" alt=\"";
    m_Body += EscapedMarkup(alternative);
    m_Body += "\"></a>";
    m_Body += Element("figcaption", caption);
    m_Body += "</figure>\n";
}

void DemoPage::AddTable(Report const& table) {
    BeginRow(Row::kTables);
    m_Body += "<div class=\"card\"><table>" + Element("caption", table.Title()) + "\n";
    for (auto const& [label, value] : table.Rows()) {
        m_Body += "<tr><th scope=\"row\">";
        m_Body += EscapedMarkup(label);
        m_Body += "</th>";
        m_Body += Element("td", value);
        m_Body += "</tr>\n";
    }
    m_Body += "</table></div>\n";
}

void DemoPage::AddTable(std::string const& title, std::vector<std::string> const& heads,
                        std::vector<std::vector<std::string>> const& rows) {
    BeginRow(Row::kTables);
    m_Body += "<div class=\"card wide\"><table>" + Element("caption", title) + "\n<tr>";
    for (std::string const& head : heads) m_Body += "<th scope=\"col\">" + EscapedMarkup(head) + "</th>";
    m_Body += "</tr>\n";
    for (auto const& row : rows) {
        m_Body += "<tr>";
        for (std::string const& cell : row) m_Body += Element("td", cell);
        m_Body += "</tr>\n";
    }
    m_Body += "</table></div>\n";
}

void DemoPage::AddPage(std::string const& file, std::string const& title) {
    BeginRow(Row::kNone);
    m_Body += "<iframe src=\"";
    m_Body += EscapedMarkup(file);
    m_Body += "\" title=\"";
    m_Body += EscapedMarkup(title);
    m_Body += "\" loading=\"lazy\"></iframe>\n<p><a href=\"";
    m_Body += EscapedMarkup(file);
    m_Body += "\">";
    m_Body += EscapedMarkup(title);
    m_Body += ", in a window of its own</a></p>\n";
}

void DemoPage::AddFiles(std::vector<std::string> const& files) {
    BeginRow(Row::kNone);
    m_Body += "<ul class=\"files\">\n";
    for (std::string const& file : files) {
        m_Body += "<li><a href=\"";
        m_Body += EscapedMarkup(file);
        m_Body += "\">";
        m_Body += EscapedMarkup(file);
        m_Body += "</a></li>\n";
    }
    m_Body += "</ul>\n";
}

std::string DemoPage::Html(std::string const& closing) const {
    std::string html =
        "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
        "<link rel=\"icon\" href=\"data:,\">\n";
    html += Element("title", m_Title);
    html += "\n<style>";
    html += kStyle;
    html += "</style>\n</head>\n<body>\n";
    html += m_Body;
    if (m_Row != Row::kNone) html += "</div>\n";
    if (m_Body.find("<section>") != std::string::npos) html += "</section>\n";
    html += "</main>\n<footer>";
    html += Element("p", closing);
    return html += "</footer>\n</body>\n</html>\n";
}
