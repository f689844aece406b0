#pragma once

#include <kestrelid/DefaultServices.h>
#include <kestrelid/PassportDetector.h>

#include <CLI/CLI.hpp>

#include <array>
#include <cstddef>
#include <functional>
#include <string>

namespace kestrelid::cli {

template <typename Value>
struct Choice {
    const char* word;  // on the command line
    Value value;
};

inline constexpr std::array<Choice<ValidationEffort>, 2> kEfforts{
    {{"complete", ValidationEffort::complete}, {"verdict", ValidationEffort::verdictOnly}}};

// An option that takes one of the words and gives its value to take.
template <typename Value, std::size_t kCount>
void addChoiceOption(CLI::App& command, const std::string& name,
                     const std::array<Choice<Value>, kCount>& choices,
                     const std::string& description, std::function<void(Value)> take) {
    std::string words;
    for (const Choice<Value>& choice : choices)
        words += (words.empty() ? "" : "|") + std::string(choice.word);
    const auto takeAll = [name, choices, words, take](const CLI::results_t& given) {
        for (const std::string& word : given) {
            bool known = false;
            for (const Choice<Value>& choice : choices) {
                if (choice.word == word) {
                    take(choice.value);
                    known = true;
                }
            }
            if (!known)
                throw CLI::ValidationError(name, "'" + word + "' is none of " + words);
        }
        return true;
    };
    command.add_option(name, takeAll, description)->type_name(words);
}

}  // namespace kestrelid::cli
