#include "platform/file_version.h"

#include "contract/contract_fixture.h"
#include "support/program_bytes.h"

namespace quellix {
namespace {

struct FileVersionContract : ContractFixture {
  std::optional<FileVersion> Read(const std::string& bytes) {
    const std::string path = test_->Scratch() + "a program.exe";
    test_->MakeFile(path, bytes);
    return ReadFileVersion(machine_.files, path);
  }
};

TEST_F(FileVersionContract, TheMakersTextsAreRead) {
  const auto version = Read(ProgramBytes("Größe & Söhne", "A program that tests"));
  ASSERT_TRUE(version);
  EXPECT_EQ(version->company, "Größe & Söhne");
  EXPECT_EQ(version->description, "A program that tests");
  EXPECT_EQ(version->version, "1.2");
  EXPECT_EQ(version->product, "Tests");
  const auto blank = Read(ProgramBytes("", ""));
  EXPECT_TRUE(blank && blank->company.empty() && blank->version == "1.2");
}

TEST_F(FileVersionContract, WhatHasNoneIsNoError) {
  const std::string whole = ProgramBytes("Maker", "Program");
  for (const std::string& bytes :
       {std::string(), std::string("echo off"), std::string("MZ"), whole.substr(0, 0x200),
        whole.substr(0, 0x240), ProgramBytes(""), ProgramBytes(std::string(300, '\0'))}) {
    const auto version = Read(bytes);
    EXPECT_TRUE(!version || version->company.empty()) << bytes;
  }
  EXPECT_FALSE(ReadFileVersion(machine_.files, test_->Scratch() + "none.exe"));
  EXPECT_FALSE(ReadFileVersion(machine_.files, test_->Scratch()));
}

}  // namespace
}  // namespace quellix
