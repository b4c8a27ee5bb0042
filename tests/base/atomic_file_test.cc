// Files, drawings among them, are replaced whole or not at all: a writer killed in the middle
// of a write, or failing in it, leaves the old file, and no later write trips over what it left.
#include "base/atomic_file.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <vector>

#include "dxf/document.h"
#include "dxf/sample_drawing.h"
#include "test_paths.h"

namespace {

namespace fs = std::filesystem;

const std::string kOld = "the old text, which must survive\n";

void writePlainly(const fs::path& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

// Everything in `dir` but `target`.
std::vector<fs::path> othersIn(const fs::path& dir, const fs::path& target) {
  std::vector<fs::path> others;
  for (const auto& entry : fs::directory_iterator(dir)) {
    if (entry.path() != target) others.push_back(entry.path());
  }
  return others;
}

int writeAll(int fd, std::string_view bytes) {
  for (size_t done = 0; done < bytes.size();) {
    ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
    if (n < 0) return errno;
    done += static_cast<size_t>(n);
  }
  return 0;
}

struct KilledWrite {
  const char* name;
  // Runs in the child; returns 0 when the write completed (which it must not).
  std::function<int(const std::string& path, const testing_paths::MidwaySignal& midway)> write;
  size_t max_file_bytes;  // 0: no cap
  int signal;
  size_t full_size;  // of the file the write would have made
};

TEST(AtomicFileTest, AWriterKilledMidwayLeavesTheOldFile) {
  const std::string text(1 << 20, 'n');
  const std::string drawing = sample::drawing();
  auto doc = dxf::Document::parse(drawing, "sample.dxf");
  ASSERT_TRUE(doc.isOk()) << doc.status().message();
  const KilledWrite cases[] = {
      {"killed by another process after half the bytes",
       [&](const std::string& path, const testing_paths::MidwaySignal& midway) {
         base::Status status = base::writeFileAtomically(path, [&](int fd) {
           if (int error = writeAll(fd, std::string_view(text).substr(0, text.size() / 2))) {
             return error;
           }
           midway();
           for (;;) ::pause();
           return 0;
         });
         return status.isOk() ? 0 : 1;
       },
       0, SIGKILL, text.size()},
      {"bytes in memory, killed at the file-size limit",
       [&](const std::string& path, const testing_paths::MidwaySignal&) {
         return base::writeFileAtomically(path, text).isOk() ? 0 : 1;
       },
       text.size() / 4, SIGXFSZ, text.size()},
      {"a drawing saved, killed at the file-size limit",
       [&](const std::string& path, const testing_paths::MidwaySignal&) {
         return doc->save(path).isOk() ? 0 : 1;
       },
       drawing.size() / 2, SIGXFSZ, drawing.size()},
  };
  for (const KilledWrite& c : cases) {
    SCOPED_TRACE(c.name);
    const testing_paths::TempDir dir("taxor_killed_write");
    const fs::path target = dir / "file";
    writePlainly(target, kOld);
    const int signal = testing_paths::runChildUntilKilled(
        [&](const testing_paths::MidwaySignal& midway) { return c.write(target.string(), midway); },
        c.max_file_bytes);
    EXPECT_EQ(signal, c.signal) << strsignal(signal);
    EXPECT_EQ(testing_paths::readFile(target.string()), kOld);
    // The killed write's part is left in a temporary of its own beside the file.
    std::vector<fs::path> left = othersIn(dir.path(), target);
    ASSERT_EQ(left.size(), 1u);
    EXPECT_EQ(left[0].filename().string().size(), std::string("file.XXXXXX").size()) << left[0];
    EXPECT_TRUE(left[0].filename().string().starts_with("file.")) << left[0];
    EXPECT_GT(fs::file_size(left[0]), 0u);
    EXPECT_LT(fs::file_size(left[0]), c.full_size);
    // It is in nobody's way: the next write replaces the file whole.
    ASSERT_TRUE(base::writeFileAtomically(target.string(), text));
    EXPECT_EQ(testing_paths::readFile(target.string()), text);
  }
}

// A write that fails says why and leaves the file, or the folder in its place, as it was,
// and nothing beside it.
TEST(AtomicFileTest, AFailedWriteSaysWhyAndLeavesWhatWasThere) {
  auto doc = dxf::Document::parse(sample::drawing(), "sample.dxf");
  ASSERT_TRUE(doc.isOk()) << doc.status().message();
  using Write = std::function<base::Status(const std::string& path)>;
  const Write save = [&](const std::string& path) { return doc->save(path); };
  const Write disk_full = [](const std::string& path) {  // as a full disk answers, midway
    return base::writeFileAtomically(path, [](int fd) {
      if (int error = writeAll(fd, "part of the new text")) return error;
      return ENOSPC;
    });
  };
  struct Case {
    const char* path;  // in a folder that holds "file" and the folder "folder.dxf"
    Write write;
    std::vector<std::string> said;  // "@" stands for the full path
  };
  const Case cases[] = {
      {"file", disk_full, {std::strerror(ENOSPC), "'@' was left unchanged"}},
      {"missing/out.dxf", save, {"cannot create a temporary file"}},
      {"file/out.dxf", save, {"cannot create a temporary file"}},
      // Fails once the temporary is written.
      {"folder.dxf", save, {"cannot replace '@'", "was left unchanged"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.path);
    const testing_paths::TempDir dir("taxor_failed_write");
    writePlainly(dir / "file", kOld);
    fs::create_directory(dir / "folder.dxf");
    const std::string path = (dir / c.path).string();
    const base::Status status = c.write(path);
    EXPECT_EQ(status.code(), base::Code::kIo);
    for (std::string said : c.said) {
      if (size_t at = said.find('@'); at != std::string::npos) said.replace(at, 1, path);
      EXPECT_NE(status.message().find(said), std::string::npos) << status.message();
    }
    EXPECT_EQ(testing_paths::readFile((dir / "file").string()), kOld);
    EXPECT_TRUE(fs::is_directory(dir / "folder.dxf") && fs::is_empty(dir / "folder.dxf"));
    EXPECT_EQ(othersIn(dir.path(), dir / "file"), std::vector<fs::path>{dir / "folder.dxf"});
  }
  // A load says why as well.
  auto absent = dxf::Document::load("/nonexistent/taxor/absent.dxf");
  ASSERT_FALSE(absent.isOk());
  EXPECT_EQ(absent.status().code(), base::Code::kIo);
  EXPECT_NE(absent.status().message().find("absent.dxf': No such file"), std::string::npos)
      << absent.status().message();
}

// A drawing saved replaces the file whole, keeping its permissions, or makes it; through a
// symbolic link it replaces the link's target, and the link stays.
TEST(AtomicFileTest, ASaveReplacesTheFileOrTheTargetOfItsLink) {
  const std::string drawing = sample::drawing();
  auto doc = dxf::Document::parse(drawing, "sample.dxf");
  ASSERT_TRUE(doc.isOk()) << doc.status().message();
  struct Case {
    const char* name;
    const char* link_to;      // as stored in the link; null: the file itself is saved
    const char* second_link;  // when not null, a link to the first link, saved through
    bool target_exists;
  };
  const Case cases[] = {
      {"new", nullptr, nullptr, false},
      {"replaced", nullptr, nullptr, true},
      {"through a relative link", "real/target", nullptr, true},
      {"through a link to a file that does not exist yet", "real/target", nullptr, false},
      {"through a second link", "real/target", "second", true},
  };
  const fs::perms kept = fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const testing_paths::TempDir dir("taxor_save");
    fs::create_directory(dir / "real");
    const fs::path target = dir / "real" / "target";
    if (c.target_exists) {
      writePlainly(target, kOld);
      fs::permissions(target, kept);
    }
    fs::path saved = target;
    if (c.link_to) {
      fs::create_symlink(c.link_to, dir / "link");
      saved = dir / "link";
    }
    if (c.second_link) {
      fs::create_symlink("link", dir / c.second_link);
      saved = dir / c.second_link;
    }
    ASSERT_TRUE(doc->save(saved.string()));
    if (c.link_to) {
      EXPECT_EQ(fs::read_symlink(dir / "link"), c.link_to);
      EXPECT_TRUE(fs::is_symlink(saved));
    }
    EXPECT_EQ(testing_paths::readFile(target.string()), drawing);
    if (c.target_exists) {
      EXPECT_EQ(fs::status(target).permissions() & fs::perms::all, kept);
    }
    EXPECT_EQ(othersIn(dir / "real", target).size(), 0u);
  }
}

}  // namespace
