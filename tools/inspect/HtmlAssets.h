#pragma once

/// @file
/// The style sheet and the script of the HTML page. Both stand in the page itself.

extern const char* const htmlStyle;
extern const char* const htmlScript;
