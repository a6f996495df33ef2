#include "platform/os/clipboard.h"

#include <gtest/gtest.h>

TEST(ClipboardTest, TextGoesRoundThroughTheDefaultPort) {
  Clipboard()->Clear();
  EXPECT_FALSE(Clipboard()->HasFormat(CF_TEXT));
  EXPECT_EQ(Clipboard()->AsText(), u"");
  Clipboard()->SetAsText(u"~T\nCOD\tNAME\n1\tUnu");
  EXPECT_TRUE(Clipboard()->HasFormat(CF_UNICODETEXT));
  EXPECT_FALSE(Clipboard()->HasFormat(2));
  EXPECT_EQ(Clipboard()->AsText(), u"~T\nCOD\tNAME\n1\tUnu");
  Clipboard()->Clear();
  EXPECT_EQ(Clipboard()->AsText(), u"");
}

TEST(ClipboardTest, AnInstalledPortReplacesTheDefault) {
  Clipboard()->SetAsText(u"default");
  TMemoryClipboard mine;
  TClipboardPort* previous = SetClipboardPort(&mine);
  EXPECT_EQ(Clipboard()->AsText(), u"");
  Clipboard()->SetAsText(u"mine");
  EXPECT_EQ(mine.GetText(), u"mine");
  SetClipboardPort(previous);
  EXPECT_EQ(Clipboard()->AsText(), u"default");
}
