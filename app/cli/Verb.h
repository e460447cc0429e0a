#pragma once

#include "Command.h"
#include "CommandLineOptions.h"

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>

/// A command of the program: how it is parsed, and what is made of what it was given.
struct Verb {
    CLI::App* app;
    std::function<std::unique_ptr<Command>()> make;
};

/// What is parsed into; shared, because parsing happens after it was declared.
template <typename Options>
struct Given {
    LibraryOptions library;
    Options options;
};
