#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

/// What a command found: rows for a table, and the same facts for JSON. A fact has one key wherever it
/// stands.
class Report {
public:
    explicit Report(std::string title) : m_Title(std::move(title)) {}

    void Add(std::string const& label, char const* key, long long count);
    void Add(std::string const& label, char const* key, double number);
    void Add(std::string const& label, char const* key, std::string const& text);
    /// A row whose text says more than the value.
    void Add(std::string const& label, char const* key, nlohmann::json value, std::string const& text);
    void AddRow(std::string const& label, std::string const& text) { m_Rows.emplace_back(label, text); }
    void AddJson(char const* key, nlohmann::json value) { m_Json[key] = std::move(value); }

    using Row = std::pair<std::string, std::string>;
    std::string const& Title() const { return m_Title; }
    std::vector<Row> const& Rows() const { return m_Rows; }
    nlohmann::json const& Json() const { return m_Json; }

    /// Prints the table, or the facts as JSON with "schema": 1. To standard error where standard output is
    /// the result.
    void Print(bool asJson = false, bool toError = false) const;

private:
    std::string m_Title;
    std::vector<Row> m_Rows;
    nlohmann::json m_Json = nlohmann::json::object();
};

/// JSON on standard output, or standard error, with "schema": 1. Bytes of names that are no text are
/// replaced.
void PrintJson(nlohmann::json json, bool toError = false);

/// "1,234,567"
std::string Count(long long count);
/// With up to ten digits, and no needless zeros.
std::string Number(double value);
/// With so many digits at most.
std::string Rounded(double value, int digits);
