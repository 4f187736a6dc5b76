#pragma once

#include <string>
#include <utility>
#include <vector>

/// Rows of a label and a value, printed with the values in one column.
class Table {
public:
    explicit Table(std::string title) : m_Title(std::move(title)) {}
    void Add(std::string const& label, std::string const& value) { m_Rows.emplace_back(label, value); }
    void Print() const;

    using Row = std::pair<std::string, std::string>;
    std::string const& Title() const { return m_Title; }
    std::vector<Row> const& Rows() const { return m_Rows; }

private:
    std::string m_Title;
    std::vector<Row> m_Rows;
};

/// "1,234,567"
std::string Count(long long nCount);
/// With up to six digits behind the point, and no needless zeros.
std::string Number(double dValue);
/// With so many digits at most.
std::string Rounded(double dValue, int nDigits);
