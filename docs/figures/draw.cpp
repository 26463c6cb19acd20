// Writes every figure of the documents into a folder. Usage: draw_figures FOLDER

#include <cstdio>

#include "Figures.h"

int main(int count, char** arguments)
{
    if (count != 2)
        return std::fputs("Usage: draw_figures FOLDER\n", stderr), 2;
    const std::string folder = std::string(arguments[1]) + "/";
    const bool written = figures::kernels().save(folder + "kernels.svg") &&
                         figures::borders().save(folder + "borders.svg") &&
                         figures::indexRules().save(folder + "index-rules.svg") &&
                         figures::layouts().save(folder + "layouts.svg") &&
                         figures::states().save(folder + "states.svg");
    if (!written)
        std::fprintf(stderr, "%s: cannot be written\n", arguments[1]);
    return written ? 0 : 1;
}
