// The subcommands. Each takes the arguments after its name and returns the exit code.
#pragma once

#include <string>
#include <vector>

#include "krocc.h"

namespace kroconv {

int Convert(int argc, char** argv);
int Sheet(int argc, char** argv);
int Compare(int argc, char** argv);
int Model(int argc, char** argv);
int Gamma(int argc, char** argv);
int Demosaic(int argc, char** argv);
int Dither(int argc, char** argv);

void ConvertHelp();
void SheetHelp();
void CompareHelp();
void ModelHelp();
void GammaHelp();
void DemosaicHelp();
void DitherHelp();

// The demosaicing methods this build has (empty: no demosaic subcommand), and whether it has the
// bit-depth reduction family.
const std::vector<std::string>& DemosaicMethods();
bool DitherOffered();

// A library call's status: errors end the command; warnings are reported and the work kept.
void CheckStatus(kroStatus status, const char* function);
extern bool g_warned;

}  // namespace kroconv
