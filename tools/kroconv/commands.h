// The subcommands. Each takes the arguments after its name and returns the exit code.
#pragma once

#include <string>

#include "krocc.h"

namespace kroconv {

int Convert(int argc, char** argv);
int Sheet(int argc, char** argv);
int Compare(int argc, char** argv);
int Model(int argc, char** argv);
int Gamma(int argc, char** argv);

void ConvertHelp();
void SheetHelp();
void CompareHelp();
void ModelHelp();
void GammaHelp();

// A library call's status: errors end the command; warnings are reported and the work kept.
void CheckStatus(kroStatus status, const char* function);
extern bool g_warned;

}  // namespace kroconv
