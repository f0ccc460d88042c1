// What leaves an interface is in its capture when all went well, and nowhere otherwise.
#include "agent/model/packets/Captures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <fstream>

#include "agent/language/Errors.h"
#include "agent/model/packets/HeldSignals.h"
#include "tests/agent/CaptureFile.h"

namespace ZelAgent {
namespace {

using ::testing::ElementsAre;

const PacketBytes one = ipv4Packet({"192.0.2.1", "203.0.113.9"}, 1);
const PacketBytes two = ipv6Packet({"2001:db8::1", "2001:db8::2"}, 2);

// As long as it lives no file grows beyond the limit, as on a disk that is full.
class FileSizeLimit final {
 public:
  explicit FileSizeLimit(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{bytes, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handler_);
  }

 private:
  void (*handler_)(int);
  rlimit before_{};
};

// As long as it lives the process has few descriptors.
class DescriptorLimit final {
 public:
  explicit DescriptorLimit(rlim_t descriptors) {
    getrlimit(RLIMIT_NOFILE, &before_);
    const rlimit limit{descriptors, before_.rlim_max};
    setrlimit(RLIMIT_NOFILE, &limit);
  }
  DescriptorLimit(const DescriptorLimit&) = delete;
  DescriptorLimit& operator=(const DescriptorLimit&) = delete;
  ~DescriptorLimit() { setrlimit(RLIMIT_NOFILE, &before_); }

 private:
  rlimit before_{};
};

class CaptureFolderTest : public ::testing::Test {
 protected:
  static std::string refusalOf(const std::function<void()>& act) {
    try {
      act();
    } catch (const CaptureError& error) {
      return error.what();
    }
    return "nothing was wrong";
  }

  const std::filesystem::path folder_ = emptyFolder("out");
};

TEST_F(CaptureFolderTest, PacketsAreInTheCaptureOfTheirInterfaceInOrderWithTheirTimes) {
  CaptureFolder captures(folder_);
  captures.write("Ethernet1", {1'700'000'000, 123'456'789}, one);
  captures.write("Ethernet2", {1'700'000'000, 123'456'790}, two);
  captures.write("Ethernet1", {5, 0}, two);
  captures.keep();
  EXPECT_THAT(namesIn(folder_), ElementsAre("Ethernet1.pcap", "Ethernet2.pcap"));
  EXPECT_THAT(readRawIpCapture(folder_ / "Ethernet1.pcap"),
              ElementsAre(CaptureFrame{one, 1'700'000'000, 123'456'789}, CaptureFrame{two, 5, 0}));
  EXPECT_THAT(readRawIpCapture(folder_ / "Ethernet2.pcap"),
              ElementsAre(CaptureFrame{two, 1'700'000'000, 123'456'790}));
}

TEST_F(CaptureFolderTest, TheFolderIsMadeIfNeeded) {
  const auto deep = folder_ / "a" / "b";
  CaptureFolder captures(deep);
  captures.write("e1", {}, one);
  captures.keep();
  EXPECT_THAT(namesIn(deep), ElementsAre("e1.pcap"));
}

TEST_F(CaptureFolderTest, WithoutPacketsThereIsNoFile) {
  CaptureFolder captures(folder_);
  captures.keep();
  EXPECT_THAT(namesIn(folder_), ElementsAre());
}

TEST_F(CaptureFolderTest, SlashesBecomeUnderscores) {
  CaptureFolder captures(folder_);
  captures.write("Ethernet1/2/3.10", {}, one);
  captures.write("../outside", {}, two);
  captures.keep();
  EXPECT_THAT(namesIn(folder_), ElementsAre(".._outside.pcap", "Ethernet1_2_3.10.pcap"));
}

TEST_F(CaptureFolderTest, AByteOfZeroDoesNotCutTheNameOfAFile) {
  const auto file = folder_ / "Ethernet1.pcap";
  writeCapture(file, CaptureLink::rawIp, {{two, 7, 7}});
  CaptureFolder captures(folder_);
  captures.write(std::string("Ethernet1.pcap\0", 15), {}, one);
  captures.keep();
  EXPECT_THAT(readRawIpCapture(file), ElementsAre(CaptureFrame{two, 7, 7}));
  EXPECT_THAT(namesIn(folder_), ElementsAre("Ethernet1.pcap", "Ethernet1.pcap_.pcap"));
}

TEST_F(CaptureFolderTest, ALinkInPlaceOfAnUnfinishedFileIsNotFollowed) {
  const auto precious = folder_ / "precious";
  std::ofstream(precious) << "keep me";
  const auto link = folder_ / "Ethernet1.pcap.unfinished";
  std::filesystem::create_symlink(precious, link);
  CaptureFolder captures(folder_);
  captures.write("Ethernet1", {}, one);
  EXPECT_EQ(refusalOf([&] { captures.keep(); }),
            link.string() + ": exists already; end the command that writes it, or remove it");
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(std::filesystem::file_size(precious), 7U);
}

TEST_F(CaptureFolderTest, AFifoInPlaceOfAnUnfinishedFileIsNotWaitedFor) {
  const auto fifo = folder_ / "Ethernet1.pcap.unfinished";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  CaptureFolder captures(folder_);
  captures.write("Ethernet1", {}, one);
  EXPECT_EQ(refusalOf([&] { captures.keep(); }),
            fifo.string() + ": exists already; end the command that writes it, or remove it");
}

TEST_F(CaptureFolderTest, ANameThatIsTakenByALinkIsRefused) {
  std::filesystem::create_symlink("elsewhere", folder_ / "Ethernet1.pcap");
  CaptureFolder captures(folder_);
  captures.write("Ethernet1", {}, one);
  EXPECT_EQ(refusalOf([&] { captures.keep(); }),
            (folder_ / "Ethernet1.pcap").string() +
                ": cannot be written: is a symbolic link; give a folder without it");
  EXPECT_THAT(namesIn(folder_), ElementsAre("Ethernet1.pcap"));
}

TEST_F(CaptureFolderTest, OnlyTheOwnerCanReadTheCaptures) {
  const mode_t before = umask(0);
  CaptureFolder captures(folder_);
  captures.write("Ethernet1", {}, one);
  captures.keep();
  umask(before);
  EXPECT_EQ(std::filesystem::status(folder_ / "Ethernet1.pcap").permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(CaptureFolderTest, MoreInterfacesThanTheProcessMayOpenFilesHaveTheirCaptures) {
  const DescriptorLimit limit(32);
  CaptureFolder captures(folder_);
  for (unsigned number = 0; number < 1200; ++number)
    captures.write("e" + std::to_string(number), {}, one);
  captures.keep();
  EXPECT_EQ(namesIn(folder_).size(), 1200U);
  EXPECT_THAT(readRawIpCapture(folder_ / "e1199.pcap"), ElementsAre(CaptureFrame{one, 0, 0}));
}

TEST_F(CaptureFolderTest, ASignalLeavesNoUnfinishedFile) {
  static bool arrived = false;
  const auto before = std::signal(SIGTERM, [](int) { arrived = true; });
  {
    // As if the signal arrived while the files are written.
    const HeldSignals signals;
    std::raise(SIGTERM);
    CaptureFolder captures(folder_);
    captures.write("Ethernet1", {}, one);
    EXPECT_EQ(refusalOf([&] { captures.keep(); }),
              folder_.string() + ": a signal ended the command");
    EXPECT_THAT(namesIn(folder_), ElementsAre());
    EXPECT_FALSE(arrived);
  }
  EXPECT_TRUE(arrived);
  std::signal(SIGTERM, before);
}

TEST_F(CaptureFolderTest, ASignalThatIsIgnoredChangesNothing) {
  const auto before = std::signal(SIGHUP, SIG_IGN);
  const HeldSignals signals;
  std::raise(SIGHUP);
  EXPECT_FALSE(signals.anyArrived());
  std::signal(SIGHUP, before);
}

TEST_F(CaptureFolderTest, InterfacesThatWouldShareAFileAreRefused) {
  CaptureFolder captures(folder_);
  captures.write("Ethernet1/2", {}, one);
  EXPECT_EQ(refusalOf([&] { captures.write("Ethernet1_2", {}, two); }),
            (folder_ / "Ethernet1_2.pcap").string() +
                ": is wanted for two interfaces, \"Ethernet1/2\" and \"Ethernet1_2\"; name them "
                "apart");
}

TEST_F(CaptureFolderTest, WithoutKeepingNothingIsLeftBehind) {
  {
    CaptureFolder captures(folder_);
    captures.write("Ethernet1", {}, one);
    captures.write("Ethernet2", {}, one);
  }
  EXPECT_THAT(namesIn(folder_), ElementsAre());
}

TEST_F(CaptureFolderTest, FilesOfTheSameNamesAreReplacedOnlyByKeeping) {
  const auto file = folder_ / "Ethernet1.pcap";
  writeCapture(file, CaptureLink::rawIp, {{two, 7, 7}});
  {
    CaptureFolder captures(folder_);
    captures.write("Ethernet1", {}, one);
  }
  EXPECT_THAT(readRawIpCapture(file), ElementsAre(CaptureFrame{two, 7, 7}));
  CaptureFolder captures(folder_);
  captures.write("Ethernet1", {8, 8}, one);
  EXPECT_THAT(readRawIpCapture(file), ElementsAre(CaptureFrame{two, 7, 7}));
  captures.keep();
  EXPECT_THAT(readRawIpCapture(file), ElementsAre(CaptureFrame{one, 8, 8}));
  EXPECT_THAT(namesIn(folder_), ElementsAre("Ethernet1.pcap"));
}

TEST_F(CaptureFolderTest, AFolderThatIsAFileIsRefused) {
  const auto file = folder_ / "file";
  std::ofstream{file};
  EXPECT_EQ(refusalOf([&] { const CaptureFolder captures(file); }),
            file.string() +
                ": cannot be made: Not a directory; give a folder that can be written "
                "to");
  EXPECT_EQ(refusalOf([&] { const CaptureFolder captures(file / "deeper"); }),
            (file / "deeper").string() +
                ": cannot be made: Not a directory; give a folder that can be written to");
}

TEST_F(CaptureFolderTest, ANameThatIsTakenByAFolderIsRefused) {
  std::filesystem::create_directory(folder_ / "Ethernet2.pcap");
  CaptureFolder captures(folder_);
  captures.write("Ethernet1", {}, one);
  captures.write("Ethernet2", {}, one);
  EXPECT_EQ(refusalOf([&] { captures.keep(); }), (folder_ / "Ethernet2.pcap").string() +
                                                     ": cannot be written: is a directory; give a "
                                                     "folder without it");
}

TEST_F(CaptureFolderTest, ACaptureWithoutRoomIsRefusedHoweverMuchOfItIsMissing) {
  for (const unsigned packets : {1U, 100U, 200U, 1000U}) {
    SCOPED_TRACE(packets);
    const FileSizeLimit limit(20);
    CaptureFolder captures(folder_);
    for (unsigned i = 0; i < packets; ++i)
      captures.write("Ethernet1", {}, one);
    EXPECT_EQ(
        refusalOf([&] { captures.keep(); }),
        (folder_ / "Ethernet1.pcap").string() +
            ": cannot be written: File too large; give a folder with room that can be written to");
  }
  EXPECT_THAT(namesIn(folder_), ElementsAre());
}

TEST_F(CaptureFolderTest, NothingIsHalfKept) {
  std::filesystem::create_directory(folder_ / "Ethernet2.pcap");
  {
    CaptureFolder captures(folder_);
    captures.write("Ethernet1", {}, one);
    captures.write("Ethernet2", {}, one);
    EXPECT_THROW(captures.keep(), CaptureError);
  }
  EXPECT_THAT(namesIn(folder_), ElementsAre("Ethernet2.pcap"));
}

TEST_F(CaptureFolderTest, AnInterfaceWithoutANameStillHasACapture) {
  CaptureFolder captures(folder_);
  captures.write("", {}, one);
  captures.keep();
  EXPECT_THAT(namesIn(folder_), ElementsAre(".pcap"));
}

}  // namespace
}  // namespace ZelAgent
