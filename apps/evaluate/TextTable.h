#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace kestrelid::evaluation {

// Rows of text in aligned columns, two spaces apart. Columns whose cells below the first row begin
// with a digit stand to the right.
class TextTable {
public:
    void add(std::vector<std::string> cells);
    [[nodiscard]] std::string text() const;

private:
    [[nodiscard]] bool isNumeric(std::size_t column) const;

    std::vector<std::vector<std::string>> rows_;  // all of one length
};

}  // namespace kestrelid::evaluation
