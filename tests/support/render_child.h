#pragma once
// velmora-render run as a child process, as a user runs it from a shell: its
// exit status and what it said on standard error.

#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

struct Finished {
  int status = -1;   // the exit status, or -1 for a program that did not exit
  std::string said;  // its standard error
};

inline std::string quoted(const std::string& text) { return "'" + text + "'"; }

// Runs velmora-render with the arguments; its standard error goes through a
// file in the given folder.
inline Finished runRender(const std::string& folder, const std::string& arguments) {
  const std::string said = folder + "/stderr";
  const std::string command = quoted(VELMORA_RENDER) + " " + arguments + " >/dev/null 2>" + quoted(said);
  const int status = std::system(command.c_str());
  std::ifstream file(said, std::ios::binary);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1,
          std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>())};
}
