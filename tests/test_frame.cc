// The call frame: export list, entry table, version record, argument-check helpers.
#include <dlfcn.h>

#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "frame/checks.h"
#include "frame/entry.h"

namespace kro {
namespace {

TEST(Frame, VersionRecord) {
  const KroVersionRecord* v = kroccGetLibVersion();
  ASSERT_NE(v, nullptr);
  EXPECT_EQ(v, kroccGetLibVersion());
  EXPECT_EQ(v->versionMajor, 9);
  EXPECT_EQ(v->versionMinor, 0);
  EXPECT_EQ(v->versionPatch, 1);
  EXPECT_EQ(v->revision, 49101);
  EXPECT_STREQ(v->name, "kroCC Tern (q5)");
  EXPECT_STREQ(v->versionText, "9.0.1 (r49101)");
  EXPECT_STREQ(v->dateText, "Oct 19 2015");
  EXPECT_TRUE(v->targetCode[0] >= 'A' && v->targetCode[0] <= 'Z');
  EXPECT_TRUE(v->targetCode[1] >= 'A' && v->targetCode[1] <= 'Z');
  EXPECT_EQ(v->targetCode[2], 0);
  EXPECT_EQ(v->targetCode[3], 0);
}

#ifdef KRO_SHARED_LIB_PATH
// The shared library answers every listed name, and the version query through it is the
// library's one record.
TEST(Frame, SharedLibraryResolvesEveryExport) {
  void* lib = dlopen(KRO_SHARED_LIB_PATH, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(lib, nullptr) << dlerror();
  for (std::size_t i = 0; i < kExportCount; ++i) {
    EXPECT_NE(dlsym(lib, kExportNames[i]), nullptr) << kExportNames[i];
  }
  using VersionFn = const KroVersionRecord* (*)();
  auto version = reinterpret_cast<VersionFn>(dlsym(lib, "kroccGetLibVersion"));
  ASSERT_NE(version, nullptr);
  EXPECT_EQ(version()->revision, 49101);
  EXPECT_EQ(dlsym(lib, "kroEntryTable"), nullptr);
  dlclose(lib);
}
#endif

// Every name of the list is callable by name and its stub jumps to the wrapper in its slot.
TEST(Frame, EachExportResolvesAndOwnsItsSlot) {
  for (std::size_t i = 0; i < kExportCount; ++i) {
    SCOPED_TRACE(kExportNames[i]);
    EXPECT_NE(kroEntryTable[i], nullptr);
    if (i > 0) {
      EXPECT_LT(std::strcmp(kExportNames[i - 1], kExportNames[i]), 0);
    }
  }
  EXPECT_STREQ(kExportNames[0], "kroccGetLibVersion");
  // The version query through its stub and straight from its slot agree.
  using VersionFn = const KroVersionRecord* (*)();
  EXPECT_EQ(reinterpret_cast<VersionFn>(kroEntryTable[0])(), kroccGetLibVersion());
}

TEST(Frame, CheckHelpers) {
  int a = 0;
  EXPECT_EQ(CheckNull(&a, &a), kroStatusOk);
  EXPECT_EQ(CheckNull(&a, static_cast<int*>(nullptr)), kroStatusNullPointer);
  EXPECT_EQ(CheckSize({1, 1}), kroStatusOk);
  EXPECT_EQ(CheckSize({0, 1}), kroStatusBadSize);
  EXPECT_EQ(CheckSize({1, -1}), kroStatusBadSize);
  EXPECT_EQ(CheckSize({3, 1}, 2, 2), kroStatusBadSize);
  EXPECT_EQ(CheckStep(1, 5), kroStatusOk);
  EXPECT_EQ(CheckStep(1, 0), kroStatusBadStep);
  EXPECT_EQ(CheckStep(-3), kroStatusBadStep);
  Kro8u b = 0;
  Kro8u* planes[3] = {&b, &b, nullptr};
  EXPECT_EQ(CheckPlanes(planes), kroStatusNullPointer);
  EXPECT_EQ(CheckPlanes(static_cast<Kro8u* const*>(planes), 2), kroStatusOk);
}

}  // namespace
}  // namespace kro
