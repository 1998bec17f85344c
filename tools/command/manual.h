// The manual and the shells' completions of a command, made from its help.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <string_view>

namespace sensorvela::replay {

/// `what`: "man", the manual's page in roff; "bash" or "zsh", the completion for that shell. It has
/// all options but the hidden ones.
std::string Generated(const CLI::App& app, std::string_view what);

}  // namespace sensorvela::replay
