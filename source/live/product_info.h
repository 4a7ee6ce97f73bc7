#pragma once
// The program's own version strings, as the settings' key path and the About
// box read them. The build sets them from the project's name and version.

#include <string>

// "Velmora".
std::string ProductName();
// The build's version, "0.1.0" for the first.
std::string ProductVersion();
std::string LegalCopyright();
// Empty unless the build names itself, with the cache variable VELMORA_SPECIAL_BUILD.
std::string SpecialBuild();
