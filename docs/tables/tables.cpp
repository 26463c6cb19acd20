// Prints the tables of docs/concepts.md, or tells which of them a document does not hold word for
// word. Usage: document_tables [DOCUMENT]

#include <cstdio>
#include <fstream>
#include <iterator>

#include "Tables.h"

namespace {

std::vector<std::string> tables()
{
    using namespace documents;
    return {indexTable(), sampleTable(),  notFiniteTable(), spacingTable(),
            formTable(),  roundedTable(), truncatedTable()};
}

int print()
{
    for (const std::string& table : tables())
        std::printf("%s\n", table.c_str());
    return 0;
}

int check(const char* document)
{
    std::ifstream file(document);
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    int missing = 0;
    for (const std::string& table : tables()) {
        if (text.find(table) != std::string::npos)
            continue;
        std::printf("%s does not hold this table:\n%s\n", document, table.c_str());
        ++missing;
    }
    return missing == 0 ? 0 : 1;
}

}  // namespace

int main(int count, char** arguments)
{
    return count > 1 ? check(arguments[1]) : print();
}
