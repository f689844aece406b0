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

inline constexpr std::array<Choice<OutlineFinder>, 3> kOutlineFinders{
    {{"both", OutlineFinder::networkFirst},
     {"network", OutlineFinder::network},
     {"classical", OutlineFinder::classical}}};

template <typename Value, std::size_t kCount>
[[nodiscard]] const char* wordFor(const std::array<Choice<Value>, kCount>& choices, Value value) {
    for (const Choice<Value>& choice : choices) {
        if (choice.value == value)
            return choice.word;
    }
    return "";
}

// An option that takes one of the words and gives its value to take. It may stand once, or as often
// as the caller likes where it mayRepeat.
template <typename Value, std::size_t kCount>
void addChoiceOption(CLI::App& command, const std::string& name,
                     const std::array<Choice<Value>, kCount>& choices,
                     const std::string& description, std::function<void(Value)> take,
                     bool mayRepeat = false) {
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
    CLI::Option* option = command.add_option(name, takeAll, description)->type_name(words);
    if (mayRepeat)
        // One word each time: what follows it is another argument.
        option->expected(1, CLI::detail::expected_max_vector_size)->allow_extra_args(false);
}

}  // namespace kestrelid::cli
