// The tables of docs/concepts.md and docs/tables.md, each computed by the library.
#pragma once

#include <charconv>
#include <cmath>
#include <string>
#include <type_traits>
#include <vector>

namespace documents {

/// A number as the tables spell it: the shortest text that reads back as the same number.
template <class T>
std::string spell(T value)
{
    if constexpr (std::is_floating_point_v<T>) {
        if (std::isnan(value))
            return "NaN";
        if (std::isinf(value))
            return value > 0 ? "infinity" : "-infinity";
    }
    char text[32];
    return std::string(text, std::to_chars(text, text + sizeof text, value).ptr);
}

/// A Markdown table, row by row; the first one is the header.
class Table {
public:
    void row(const std::vector<std::string>& cells)
    {
        markdown += line(cells);
        if (!headed)
            markdown += line(std::vector<std::string>(cells.size(), "---"));
        headed = true;
    }

    const std::string& text() const { return markdown; }

private:
    static std::string line(const std::vector<std::string>& cells)
    {
        std::string result = "|";
        for (const std::string& cell : cells)
            result += " " + cell + " |";
        return result + "\n";
    }

    std::string markdown;
    bool headed = false;
};

/// A position or a value, and its name in the tables.
struct Named {
    std::string name;
    double value;
};

std::string indexTable();      ///< which voxel each kernel reads first at odd positions
std::string sampleTable();     ///< what each kernel gives there with each border
std::string notFiniteTable();  ///< what voxels and border values that are not finite do
std::string spacingTable();    ///< what odd spacings do to a physical position
std::string formTable();       ///< what each form of a sampling call does to the same reading
std::string roundedTable();    ///< what odd readings give in each element type, rounded
std::string truncatedTable();  ///< the same, truncated

}  // namespace documents
