// Parses shell source text into statements.
#pragma once

#include <string_view>

#include "ast.h"
#include "lexer.h"

// Throws SyntaxError.
Program parseProgram(std::string_view source);
