// Prints the tables of the documents, or those that none of the given documents contains word for
// word. Usage: document_tables [DOCUMENT ...]

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

std::string contentOf(const char* document)
{
    std::ifstream file(document);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

int check(const std::string& documents)
{
    int missing = 0;
    for (const std::string& table : tables()) {
        if (documents.find(table) != std::string::npos)
            continue;
        std::printf("No document contains this table:\n%s\n", table.c_str());
        ++missing;
    }
    return missing == 0 ? 0 : 1;
}

}  // namespace

int main(int count, char** arguments)
{
    std::string documents;
    for (int n = 1; n < count; ++n)
        documents += contentOf(arguments[n]);
    return count > 1 ? check(documents) : print();
}
