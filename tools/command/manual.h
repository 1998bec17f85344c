// The manual and the shells' completions of a command, made from its help.
#pragma once

#include <CLI/CLI.hpp>

namespace sensorvela::tools {

/// Adds the hidden option `--generate`, with which the build writes the manual's page in roff
/// ("man") and the completions ("bash", "zsh"). They have all options but the hidden ones. `app`
/// has its name already and outlives the parsing.
void AddGenerateOption(CLI::App& app);

}  // namespace sensorvela::tools
