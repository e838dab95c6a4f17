/* A C99 program that uses the installed library: found through the CMake package or pkg-config. */
#include <stdio.h>
#include <string.h>

#include <krocc.h>

int main(void) {
  const KroVersionRecord* v = kroccGetLibVersion();
  if (v == NULL || v->versionMajor != 9 || strcmp(v->versionText, "9.0.1 (r49101)") != 0) {
    fprintf(stderr, "unexpected version record\n");
    return 1;
  }
  printf("%s %s\n", v->name, v->versionText);
  return 0;
}
