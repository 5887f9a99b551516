// Checksums of an installation's tables.
#include "common/installation.h"

#include <gtest/gtest.h>

#include "common/sha256.h"
#include "support/process.h"

namespace {

TEST(Installation, Sha256AgreesWithThePublishedVectors) {
  const std::pair<std::string, const char*> vectors[] = {
      {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
      {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
       "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
      {std::string(1000000, 'a'), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"}};
  for (const auto& [text, sum] : vectors) EXPECT_EQ(tools::sha256(text), sum);
}

TEST(Installation, VerifyNamesWhatDiffers) {
  const support::TempDir folder;
  std::filesystem::create_directory(folder / "tab");
  EXPECT_FALSE(tools::verifyInstallation(folder.path).listed);
  EXPECT_EQ(tools::installationIdentity(folder.path), "");
  const auto line = [](const std::string& text, const std::string& name) {
    return tools::sha256(text) + ' ' + std::to_string(text.size()) + ' ' + name + '\n';
  };
  const std::string list = line("good", "a.tab") + line("flip", "b.tab") + line("long", "c.tab");
  support::writeFile(folder / "tab/TABLES.sha256", list);
  support::writeFile(folder / "tab/a.tab", "good");
  support::writeFile(folder / "tab/b.tab", "flop");
  support::writeFile(folder / "tab/c.tab", "lon");
  const tools::Verification found = tools::verifyInstallation(folder.path);
  EXPECT_EQ(found.tables, 3U);
  ASSERT_EQ(found.faults.size(), 2U);
  EXPECT_TRUE(support::contains(found.faults[0], "c.tab is damaged") &&
              support::contains(found.faults[0], "3 bytes"));
  EXPECT_TRUE(support::contains(found.faults[1], "b.tab is damaged"));
  EXPECT_EQ(tools::installationIdentity(folder.path), tools::sha256(list).substr(0, 12));
  EXPECT_EQ(tools::installationIdentity(folder / "tab"), tools::installationIdentity(folder.path));
}

}  // namespace
