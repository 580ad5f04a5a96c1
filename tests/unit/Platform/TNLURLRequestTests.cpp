#include <gtest/gtest.h>

#include "Platform/Http/TNLURLRequest.h"

namespace {

TEST(TNLURLRequest, ReadsURLsAsABrowserReadsAnAddress) {
  // Blanks and line breaks around an address (as in a VAST ad tag) are dropped.
  EXPECT_EQ(TNLURLRequest::parseURL("\n      http://127.0.0.1:80/a.xml\n      "),
            "http://127.0.0.1:80/a.xml");
  EXPECT_EQ(TNLURLRequest::parseURL("http://h/a\r\nb\tc"), "http://h/abc");
  // What a URL cannot carry is encoded; escapes already there stay.
  EXPECT_EQ(TNLURLRequest::parseURL("http://h/a b?q=\"x\"&y=\xc3\xa9"),
            "http://h/a%20b?q=%22x%22&y=%C3%A9");
  EXPECT_EQ(TNLURLRequest::parseURL("http://h/%2520?a=1&b=2+3"), "http://h/%2520?a=1&b=2+3");
  EXPECT_EQ(TNLURLRequest::parseURL("https://user@[::1]:8080/p#f"), "https://user@[::1]:8080/p#f");
  EXPECT_EQ(TNLURLRequest::parseURL("relative/path"), "relative/path");
}

TEST(TNLURLRequest, RefusesEmptyTextAndHostsThatAreNoHostNames) {
  EXPECT_FALSE(TNLURLRequest::parseURL(""));
  EXPECT_FALSE(TNLURLRequest::parseURL(" \n "));
  EXPECT_FALSE(TNLURLRequest::parseURL("http://exa mple.com/"));
  EXPECT_FALSE(TNLURLRequest::parseURL("http://"));
  EXPECT_FALSE(TNLURLRequest::parseURL("http://<host>/"));
}

}  // namespace
