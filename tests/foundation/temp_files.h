// A private temporary directory for a test, removed with everything in it.
#pragma once

#include <filesystem>
#include <stdexcept>
#include <stdlib.h>
#include <string>

class TempDir {
public:
  TempDir() {
    std::string tmpl = (std::filesystem::temp_directory_path() / "htcore-test-XXXXXX").string();
    if (!mkdtemp(tmpl.data()))
      throw std::runtime_error("mkdtemp failed");
    FDir = tmpl;
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  ~TempDir() {
    std::error_code ec;
    std::filesystem::remove_all(FDir, ec);
  }
  // The directory itself for an empty name.
  std::string Path(const std::string& name) const { return name.empty() ? FDir : FDir + "/" + name; }

private:
  std::string FDir;
};
