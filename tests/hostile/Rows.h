#ifndef HOSTILE_ROWS_H
#define HOSTILE_ROWS_H

#include <initializer_list>
#include <vector>

namespace hostile
{

// The tables one after the other.
template <typename Row>
std::vector<Row> together(std::initializer_list<std::vector<Row>> tables)
{
    std::vector<Row> rows;
    for (const std::vector<Row>& table : tables)
        rows.insert(rows.end(), table.begin(), table.end());
    return rows;
}

} // namespace hostile

#endif
