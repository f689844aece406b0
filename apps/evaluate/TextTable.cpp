#include "apps/evaluate/TextTable.h"

#include <algorithm>
#include <utility>

namespace kestrelid::evaluation {

void TextTable::add(std::vector<std::string> cells) {
    rows_.push_back(std::move(cells));
}

bool TextTable::isNumeric(std::size_t column) const {
    return std::all_of(rows_.begin() + 1, rows_.end(), [&](const auto& row) {
        const std::string& cell = row[column];
        return cell == "-" || (!cell.empty() && cell.front() >= '0' && cell.front() <= '9');
    });
}

std::string TextTable::text() const {
    if (rows_.empty())
        return "";
    std::vector<std::size_t> widths(rows_.front().size(), 0);
    std::vector<bool> numeric(widths.size());
    for (std::size_t column = 0; column < widths.size(); ++column) {
        for (const auto& row : rows_)
            widths[column] = std::max(widths[column], row[column].size());
        numeric[column] = isNumeric(column);
    }
    std::string text;
    for (const auto& row : rows_) {
        std::string line;
        for (std::size_t column = 0; column < row.size(); ++column) {
            const std::string space(widths[column] - row[column].size(), ' ');
            line += column == 0 ? "" : "  ";
            line += numeric[column] ? space + row[column] : row[column] + space;
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + "\n";
    }
    return text;
}

}  // namespace kestrelid::evaluation
