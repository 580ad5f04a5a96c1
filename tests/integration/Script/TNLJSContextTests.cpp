#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

#include "Platform/Script/TNLJSContext.h"

namespace {

TEST(TNLJSContext, EvaluatesScriptsAndTellsValueKindsApart) {
  const auto context = TNLJSContext::create();

  const TNLJSValue number = context->evaluateScript("6 * 7");
  EXPECT_TRUE(number.isNumber());
  EXPECT_EQ(number.toNumber(), 42);
  const TNLJSValue text = context->evaluateScript("'a' + 'b'");
  EXPECT_TRUE(text.isString());
  EXPECT_EQ(text.toString(), "ab");
  EXPECT_FALSE(context->evaluateScript("undefined").isNull());
  const TNLJSValue nullValue = context->evaluateScript("null");
  EXPECT_TRUE(nullValue.isNull());
  EXPECT_FALSE(nullValue.isObject());
  EXPECT_TRUE(context->evaluateScript("(() => 1)").isFunction());
  const TNLJSValue object = context->evaluateScript("({k: 'v'})");
  EXPECT_FALSE(object.isFunction());
  EXPECT_EQ(object.property("k").toString(), "v");

  // A throwing script gives undefined and leaves its exception until the next evaluation.
  EXPECT_TRUE(context->evaluateScript("throw new Error('boom')").isUndefined());
  ASSERT_TRUE(context->exception());
  EXPECT_EQ(*context->exception(), "Error: boom");
  context->evaluateScript("1");
  EXPECT_FALSE(context->exception());
  context->evaluateScript("this is not a script");
  EXPECT_TRUE(context->exception());

  // Globals persist across evaluations, and `this` is the global object.
  context->evaluateScript("var kept = 5; this.alsoKept = 6;");
  EXPECT_EQ(context->globalObject().property("kept").toNumber(), 5);
  EXPECT_EQ(context->evaluateScript("alsoKept").toNumber(), 6);
}

TEST(TNLJSContext, PropertiesAndTextRoundTripAsUTF8) {
  const auto context = TNLJSContext::create();
  const TNLJSValue global = context->globalObject();
  global.setProperty("greeting", context->stringValue("h\xC3\xA9llo \xF0\x9F\x98\x80"));
  // é is one UTF-16 unit, the emoji two.
  EXPECT_EQ(context->evaluateScript("greeting.length").toNumber(), 8);
  EXPECT_EQ(context->evaluateScript("greeting").toString(), "h\xC3\xA9llo \xF0\x9F\x98\x80");
  EXPECT_EQ(context->evaluateScript("'\\u00e9\\ud83d\\ude00'").toString(),
            "\xC3\xA9\xF0\x9F\x98\x80");
  // Malformed bytes become replacement characters instead of losing the whole text.
  EXPECT_EQ(context
                ->stringValue("a\xFF"
                              "b")
                .toString(),
            "a\xEF\xBF\xBD"
            "b");

  global.setProperty("flag", context->booleanValue(true));
  global.setProperty("nothing", context->nullValue());
  global.setProperty("pi", context->numberValue(3.5));
  EXPECT_EQ(context->evaluateScript("typeof flag + typeof nothing + (pi * 2)").toString(),
            "booleanobject7");

  const TNLJSValue parsed = context->valueFromJSON(R"({"list":[1,"two"],"n":null})");
  EXPECT_EQ(parsed.property("list").property("1").toString(), "two");
  EXPECT_TRUE(parsed.property("n").isNull());
  EXPECT_TRUE(context->valueFromJSON("{not json").isUndefined());
}

TEST(TNLJSContext, NativeFunctionsAndCallsOfFunctionValues) {
  const auto context = TNLJSContext::create();
  const TNLJSValue host = context->objectValue();
  context->globalObject().setProperty("host", host);
  size_t lastArgumentCount = 99;
  context->setFunction(host, "sum", [&](TNLJSContext& ctx, const std::vector<TNLJSValue>& args) {
    lastArgumentCount = args.size();
    double total = 0;
    for (const auto& argument : args) {
      total += argument.toNumber();
    }
    return ctx.numberValue(total);
  });
  context->setFunction(host, "fail",
                       [](TNLJSContext&, const std::vector<TNLJSValue>&) -> TNLJSValue {
                         throw std::runtime_error("native failure");
                       });
  context->setFunction(host, "nothing",
                       [](TNLJSContext&, const std::vector<TNLJSValue>&) { return TNLJSValue(); });

  EXPECT_EQ(context->evaluateScript("host.sum(1, 2, 3)").toNumber(), 6);
  EXPECT_EQ(lastArgumentCount, 3u);
  EXPECT_EQ(context->evaluateScript("host.sum()").toNumber(), 0);
  EXPECT_EQ(lastArgumentCount, 0u);
  EXPECT_EQ(context->evaluateScript("typeof host.nothing()").toString(), "undefined");
  // A C++ exception reaches the script as an exception it can catch.
  EXPECT_EQ(context->evaluateScript("try { host.fail(); 'no' } catch (e) { String(e) }").toString(),
            "native failure");

  // Calling a function value: arguments in order, the global object as `this`.
  context->evaluateScript("var marker = 'g'; function join(a, b) { return this.marker + a + b; }");
  const TNLJSValue join = context->globalObject().property("join");
  EXPECT_EQ(join.call({context->stringValue("x"), context->numberValue(1)}).toString(), "gx1");
  EXPECT_FALSE(context->exception());

  const TNLJSValue thrower = context->evaluateScript("(function () { throw 'inside'; })");
  EXPECT_TRUE(thrower.call().isUndefined());
  EXPECT_EQ(context->exception(), std::optional<std::string>("inside"));

  EXPECT_TRUE(context->stringValue("text").call().isUndefined());
  ASSERT_TRUE(context->exception());
  EXPECT_NE(context->exception()->find("TypeError"), std::string::npos);
}

TEST(TNLJSContext, HeldValuesSurviveCollectionAndNativeFunctionsEndWithTheContext) {
  auto context = TNLJSContext::create();
  const TNLJSValue counter = context->evaluateScript(
      "(function () { var n = { count: 0 }; return function () { return ++n.count; }; })()");
  // Nothing in the script refers to the closure any more; only native code holds it.
  for (int round = 0; round < 3; ++round) {
    context->evaluateScript(
        "var junk = []; for (var i = 0; i < 20000; ++i) junk.push({i: i}); junk = null;");
    context->collectGarbage();
  }
  EXPECT_EQ(counter.call().toNumber(), 1);
  EXPECT_EQ(counter.call().toNumber(), 2);

  // A held value keeps its context alive.
  const std::weak_ptr<TNLJSContext> weakContext = context;
  auto token = std::make_shared<int>(7);
  const std::weak_ptr<int> weakToken = token;
  context->setFunction(context->globalObject(), "keep",
                       [token](TNLJSContext& ctx, const std::vector<TNLJSValue>&) {
                         return ctx.numberValue(*token);
                       });
  token.reset();
  EXPECT_EQ(context->evaluateScript("keep()").toNumber(), 7);
  context.reset();
  EXPECT_FALSE(weakContext.expired());
  EXPECT_EQ(counter.call().toNumber(), 3);
  EXPECT_FALSE(weakToken.expired());
}

TEST(TNLJSContext, NativeFunctionsAreReleasedWhenTheContextGoes) {
  auto token = std::make_shared<int>(1);
  const std::weak_ptr<int> weakToken = token;
  {
    const auto context = TNLJSContext::create();
    context->setFunction(context->globalObject(), "f",
                         [token](TNLJSContext& ctx, const std::vector<TNLJSValue>&) {
                           return ctx.numberValue(*token);
                         });
    token.reset();
    EXPECT_EQ(context->evaluateScript("f()").toNumber(), 1);
  }
  EXPECT_TRUE(weakToken.expired());
}

}  // namespace
