#include "platform/rtl/streams.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <unistd.h>

#include "platform/rtl/sysutils.h"

namespace {

TEST(MemoryStreamTest, ReadWriteSeekAndSize) {
  TMemoryStream s;
  s.WriteBuffer("hello", 5);
  EXPECT_EQ(s.Position(), 5);
  EXPECT_EQ(s.Size(), 5);
  EXPECT_EQ(s.Seek(-2, soFromEnd), 3);
  char buf[8] = {};
  EXPECT_EQ(s.Read(buf, 8), 2);  // only what is there
  EXPECT_EQ(std::string(buf, 2), "lo");
  EXPECT_EQ(s.Read(buf, 8), 0);
  s.SetPosition(1);
  s.WriteBuffer("EL", 2);
  EXPECT_EQ(std::string(static_cast<const char*>(s.Memory()), 5), "hELlo");
  EXPECT_EQ(s.Seek(1, soCurrent), 4);
  EXPECT_THROW(s.Seek(-1, soBeginning), EStreamError);
}

TEST(MemoryStreamTest, WritingPastTheEndFillsWithZerosAndSetSizeClampsPosition) {
  TMemoryStream s;
  s.SetPosition(3);
  s.WriteBuffer("x", 1);
  ASSERT_EQ(s.Size(), 4);
  EXPECT_EQ(std::string(static_cast<const char*>(s.Memory()), 4), std::string("\0\0\0x", 4));
  s.SetSize(2);
  EXPECT_EQ(s.Position(), 2);
  s.SetSize(10);
  EXPECT_EQ(s.Position(), 2);
  EXPECT_EQ(s.Size(), 10);
  s.Clear();
  EXPECT_EQ(s.Size(), 0);
  EXPECT_EQ(s.Position(), 0);
}

TEST(StreamErrorsTest, ShortReadsAndWritesRaise) {
  TMemoryStream s;
  s.WriteBuffer("abc", 3);
  s.SetPosition(1);
  char buf[4];
  try {
    s.ReadBuffer(buf, 3);
    FAIL();
  } catch (const EReadError& e) {
    EXPECT_EQ(e.Message, u"Stream read error");
  }
  EXPECT_NO_THROW(s.ReadBuffer(buf, 0));

  // A file opened for reading writes nothing.
  std::filesystem::path path = std::filesystem::temp_directory_path() / ("kelmar_ro_" + std::to_string(getpid()));
  { TFileStream create(String(path.string()), fmCreate); }
  {
    TFileStream ro(String(path.string()), fmOpenRead | fmShareDenyNone);
    try {
      ro.WriteBuffer("x", 1);
      FAIL();
    } catch (const EWriteError& e) {
      EXPECT_EQ(e.Message, u"Stream write error");
    }
  }
  std::filesystem::remove(path);
}

TEST(StreamCopyTest, CopyFromCountOrWholeStream) {
  TMemoryStream source, target;
  std::string big(200000, '\0');
  for (size_t i = 0; i < big.size(); ++i) big[i] = static_cast<char>(i * 7);
  source.WriteBuffer(big.data(), static_cast<int64_t>(big.size()));
  EXPECT_EQ(target.CopyFrom(&source, 0), 200000);  // 0: all of it, from the start
  EXPECT_EQ(std::string(static_cast<const char*>(target.Memory()), 200000), big);
  source.SetPosition(10);
  target.Clear();
  EXPECT_EQ(target.CopyFrom(&source, 5), 5);
  EXPECT_EQ(std::string(static_cast<const char*>(target.Memory()), 5), big.substr(10, 5));
  source.SetPosition(199999);
  EXPECT_THROW(target.CopyFrom(&source, 2), EReadError);
}

TEST(StringStreamTest, DataStringInTheSystemCodePageOrAnEncoding) {
  SetSystemCodePage(1251);
  TStringStream ansi(u"Привет");
  EXPECT_EQ(ansi.Size(), 6);
  EXPECT_EQ(ansi.DataString(), u"Привет");
  TStringStream utf16(u"ș", TEncoding::Unicode);
  EXPECT_EQ(utf16.Size(), 2);
  EXPECT_EQ(utf16.DataString(), u"ș");
  SetSystemCodePage(65001);

  TStringStream s;
  s.WriteString(u"ab");
  s.WriteString(u"ёж");
  EXPECT_EQ(s.DataString(), u"abёж");
  s.SetPosition(2);
  EXPECT_EQ(s.ReadString(2), u"ё");
  EXPECT_EQ(s.ReadString(100), u"ж");
  EXPECT_EQ(s.ReadString(5), u"");
}

TEST(EncodingTest, PreamblesAndUtf16) {
  TEncoding e = TEncoding::Default;
  EXPECT_EQ(DetectPreamble("\xEF\xBB\xBFx", e), 3u);
  EXPECT_EQ(e, TEncoding::UTF8);
  EXPECT_EQ(DetectPreamble("\xFE\xFF", e), 2u);
  EXPECT_EQ(e, TEncoding::BigEndianUnicode);
  EXPECT_EQ(DetectPreamble("\xEF\xBB", e), 0u);  // a cut mark is text
  EXPECT_EQ(e, TEncoding::BigEndianUnicode);
  EXPECT_EQ(EncodeText(u"Aё", TEncoding::BigEndianUnicode), std::string("\0A\x04\x51", 4));
  EXPECT_EQ(DecodeText(std::string("A\0\x51\x04", 4), TEncoding::Unicode), u"Aё");
  SetSystemCodePage(1251);
  EXPECT_TRUE(CanEncode(u"Привет", TEncoding::Default));
  EXPECT_FALSE(CanEncode(u"ș", TEncoding::Default));
  EXPECT_TRUE(CanEncode(u"ș", TEncoding::UTF8));
  SetSystemCodePage(65001);
}

class FileStreamTest : public ::testing::Test {
 protected:
  void TearDown() override { std::filesystem::remove(path_); }
  String Name() const { return String(path_.string()); }
  std::filesystem::path path_ =
      std::filesystem::temp_directory_path() / ("kelmar_streams_" + std::to_string(getpid()) + ".bin");
};

TEST_F(FileStreamTest, CreateWriteReopenRead) {
  {
    TFileStream f(Name(), fmCreate | fmShareExclusive);
    f.WriteBuffer("0123456789", 10);
    EXPECT_EQ(f.Size(), 10);
    f.SetPosition(2);
    char buf[3];
    f.ReadBuffer(buf, 3);  // reading right after writing
    EXPECT_EQ(std::string(buf, 3), "234");
    f.WriteBuffer("xy", 2);  // and writing right after reading
    EXPECT_EQ(f.FileName(), Name());
  }
  TFileStream f(Name(), fmOpenReadWrite);
  EXPECT_EQ(f.Size(), 10);
  char all[10];
  f.ReadBuffer(all, 10);
  EXPECT_EQ(std::string(all, 10), "01234xy789");
  f.SetSize(4);
  EXPECT_EQ(f.Size(), 4);
  EXPECT_EQ(f.Position(), 4);
  EXPECT_EQ(f.Read(all, 10), 0);
}

TEST_F(FileStreamTest, OpenAndCreateFailuresNameTheFile) {
  try {
    TFileStream f(u"/nonexistent-dir/x.dat", fmOpenRead);
    FAIL();
  } catch (const EFOpenError& e) {
    EXPECT_EQ(e.Message.Pos(u"Cannot open file \"/nonexistent-dir/x.dat\". "), 1);
    EXPECT_GT(e.Message.Length(), 45);  // the reason follows
  }
  try {
    TFileStream f(u"/nonexistent-dir/x.dat", fmCreate);
    FAIL();
  } catch (const EFCreateError& e) {
    EXPECT_EQ(e.Message.Pos(u"Cannot create file \"/nonexistent-dir/x.dat\". "), 1);
  }
}

TEST_F(FileStreamTest, MemoryStreamFilesAndUnicodeNames) {
  path_ = std::filesystem::temp_directory_path() / ("kelmar_ștefan_" + std::to_string(getpid()) + ".bin");
  TMemoryStream out;
  out.WriteBuffer("\0\1\2\3", 4);
  out.SaveToFile(Name());
  TMemoryStream in;
  in.WriteBuffer("old content", 11);
  in.LoadFromFile(Name());
  EXPECT_EQ(in.Size(), 4);
  EXPECT_EQ(in.Position(), 0);
  EXPECT_EQ(std::string(static_cast<const char*>(in.Memory()), 4), std::string("\0\1\2\3", 4));
}

}  // namespace
