// What odd positions, spacings and voxels give.

#include <limits>

#include "../FirstNeighbour.h"
#include "Tables.h"

namespace documents {

namespace {

using namespace volux::core;
using Row = VxImage<double>;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kOutside = 7;

std::string spellIndex(const std::optional<int>& index)
{
    return index ? std::to_string(*index) : "none";
}

/// All three kernels, each with Constant and with Replication.
std::vector<std::string> readings(const Row& row, double x, double outside)
{
    std::vector<std::string> cells;
    const auto add = [&](auto kernel) {
        cells.push_back(spell(row.getDoubleValueReal(x, 0, 0, 0, kernel,
                                                     InterpolationBorderType::CONSTANT, outside)));
        cells.push_back(spell(row.getDoubleValueReal(
            x, 0, 0, 0, kernel, InterpolationBorderType::REPLICATION, outside)));
    };
    add(InterpolationType::NEAREST_NEIGHBOR);
    add(InterpolationType::LINEAR);
    add(InterpolationType::CUBIC);
    return cells;
}

std::vector<std::string> withReadings(std::vector<std::string> cells, const Row& row, double x,
                                      double outside)
{
    const std::vector<std::string> more = readings(row, x, outside);
    cells.insert(cells.end(), more.begin(), more.end());
    return cells;
}

std::vector<std::string> headed(std::vector<std::string> cells)
{
    for (const char* kernel : {"nearest", "linear", "cubic"})
        for (const char* border : {"Constant", "Replication"})
            cells.push_back(std::string(kernel) + ", " + border);
    return cells;
}

}  // namespace

std::string indexTable()
{
    const std::vector<Named> positions = {
        {"0", 0},
        {"-0.0", -0.0},
        {"0.49999999999999994, the double below 0.5", 0.49999999999999994},
        {"0.5", 0.5},
        {"2.4999", 2.4999},
        {"2.5", 2.5},
        {"-0.25", -0.25},
        {"-0.5", -0.5},
        {"-0.51", -0.51},
        {"-1", -1},
        {"-1.5", -1.5},
        {"-1.6", -1.6},
        {"-2", -2},
        {"2147483645", 2147483645},
        {"2147483646", 2147483646},
        {"2147483647", 2147483647},
        {"2147483648 and above, infinity", 2147483648},
        {"-2147483647", -2147483647},
        {"-2147483648", -2147483648.0},
        {"-2147483649 and below, -infinity", -2147483649.0},
        {"NaN", kNaN}};
    Table table;
    table.row({"position", "nearest neighbour", "linear, first of 2", "cubic, first of 4"});
    for (const Named& each : positions)
        table.row({each.name, spellIndex(firstNeighbour<NearestNeighbor>(each.value)),
                   spellIndex(firstNeighbour<Linear>(each.value)),
                   spellIndex(firstNeighbour<Cubic>(each.value))});
    return table.text();
}

std::string sampleTable()
{
    const std::vector<Named> positions = {{"1", 1},
                                          {"1.5", 1.5},
                                          {"3 = width - 1", 3},
                                          {"3.25", 3.25},
                                          {"3.5 = width - 0.5", 3.5},
                                          {"4 = width", 4},
                                          {"5", 5},
                                          {"-0.25", -0.25},
                                          {"-0.5", -0.5},
                                          {"-0.51", -0.51},
                                          {"-1", -1},
                                          {"-1.5", -1.5},
                                          {"1e9", 1e9},
                                          {"-1e9", -1e9},
                                          {"2147483645", 2147483645},
                                          {"2147483647", 2147483647},
                                          {"2147483648", 2147483648.0},
                                          {"-2147483648", -2147483648.0},
                                          {"1e300", 1e300},
                                          {"-1e300", -1e300},
                                          {"infinity", kInfinity},
                                          {"-infinity", -kInfinity},
                                          {"NaN", kNaN}};
    double voxels[] = {10, 20, 40, 80};
    Row row;
    row.initializeWithPointer(voxels, 4, 1, 1, 1);
    Table table;
    table.row(headed({"x"}));
    for (const Named& each : positions)
        table.row(withReadings({each.name}, row, each.value, kOutside));
    return table.text();
}

std::string notFiniteTable()
{
    const struct {
        const char* name;
        double second;
        double outside;
        Named position;
    } cases[] = {{"10, infinity, 30", kInfinity, kOutside, {"0", 0}},
                 {"10, infinity, 30", kInfinity, kOutside, {"0.5", 0.5}},
                 {"10, infinity, 30", kInfinity, kOutside, {"2", 2}},
                 {"10, NaN, 30", kNaN, kOutside, {"0", 0}},
                 {"10, NaN, 30", kNaN, kOutside, {"2", 2}},
                 {"10, 20, 30; NaN outside", 20, kNaN, {"1", 1}},
                 {"10, 20, 30; infinity outside", 20, kInfinity, {"2 = width - 1", 2}},
                 {"10, -0.0, 30", -0.0, kOutside, {"1", 1}}};
    Table table;
    table.row(headed({"voxels", "x"}));
    for (const auto& each : cases) {
        double voxels[] = {10, each.second, 30};
        Row row;
        row.initializeWithPointer(voxels, 3, 1, 1, 1);
        table.row(
            withReadings({each.name, each.position.name}, row, each.position.value, each.outside));
    }
    return table.text();
}

std::string spacingTable()
{
    const std::vector<Named> spacings = {
        {"1", 1},           {"0.5", 0.5}, {"2", 2},   {"infinity", kInfinity},
        {"1e-300", 1e-300}, {"0", 0},     {"-1", -1}, {"NaN", kNaN}};
    Table table;
    table.row({"x spacing", "setVoxelSize", "linear, Constant", "linear, Replication"});
    for (const Named& each : spacings) {
        double voxels[] = {10, 20, 40, 80};
        Row row;
        row.initializeWithPointer(voxels, 4, 1, 1, 1);
        const bool taken = row.setVoxelSize(each.value, 1, 1) == SUCCESS;
        const std::vector<std::string> cells = readings(row, 1.0, kOutside);
        table.row({each.name, taken ? "taken" : "refused, 1 stays", cells[2], cells[3]});
    }
    return table.text();
}

}  // namespace documents
