#pragma once

#include <string>
#include <vector>

#include "Report.h"

/// A page of HTML, one file beside its pictures: it needs no network and runs no program.
class DemoPage {
public:
    /// The lead is a sentence or two below the title.
    DemoPage(std::string const& title, std::string const& lead);

    void BeginSection(std::string const& title, std::string const& text);
    /// A picture from a file in the folder of the page. The alternative says what there is to see, for who
    /// does not see it.
    void AddPicture(std::string const& file, std::string const& alternative, std::string const& caption);
    void AddTable(Report const& table);
    /// A table of several columns, over the whole width of the page.
    void AddTable(std::string const& title, std::vector<std::string> const& heads,
                  std::vector<std::vector<std::string>> const& rows);
    /// A page of its own in a frame, from a file in the folder of the page, and a link to it.
    void AddPage(std::string const& file, std::string const& title);
    /// Names of files in the folder of the page, as links.
    void AddFiles(std::vector<std::string> const& files);

    /// The whole page; the closing line stands at its end.
    std::string Html(std::string const& closing) const;

private:
    // What comes next is of another kind: pictures and tables stand side by side with their like.
    enum class Row { kNone, kPictures, kTables };
    void BeginRow(Row row);

    std::string m_Title;
    std::string m_Body;
    Row m_Row = Row::kNone;
};
