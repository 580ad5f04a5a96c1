#include <gtest/gtest.h>

#include <stdexcept>

#include "Platform/Script/TNLJSContext.h"

namespace {

TEST(TNLJSContext, ExceptionsAreKeptUntilTheNextEvaluation) {
  const auto context = TNLJSContext::create();
  EXPECT_TRUE(context->evaluateScript("throw new Error('boom')").isUndefined());
  EXPECT_EQ(context->exception(), std::optional<std::string>("Error: boom"));
  EXPECT_EQ(context->evaluateScript("6 * 7").toNumber(), 42);
  EXPECT_FALSE(context->exception());
  context->evaluateScript("this is not a script");
  EXPECT_TRUE(context->exception());

  const TNLJSValue thrower = context->evaluateScript("(function () { throw 'inside'; })");
  EXPECT_TRUE(thrower.call().isUndefined());
  EXPECT_EQ(context->exception(), std::optional<std::string>("inside"));
  EXPECT_TRUE(context->stringValue("text").call().isUndefined());
  ASSERT_TRUE(context->exception());
  EXPECT_NE(context->exception()->find("TypeError"), std::string::npos);
}

TEST(TNLJSContext, NativeFunctionsAndCallsOfFunctionValues) {
  const auto context = TNLJSContext::create();
  context->setFunction(context->globalObject(), "fail",
                       [](TNLJSContext&, const std::vector<TNLJSValue>&) -> TNLJSValue {
                         throw std::runtime_error("native failure");
                       });
  // A C++ exception reaches the script as an exception it can catch.
  EXPECT_EQ(context->evaluateScript("try { fail(); 'no' } catch (e) { String(e) }").toString(),
            "native failure");

  // Calling a function value: arguments in order, the global object as `this`.
  context->evaluateScript("var marker = 'g'; function join(a, b) { return this.marker + a + b; }");
  const TNLJSValue join = context->globalObject().property("join");
  EXPECT_EQ(join.call({context->stringValue("x"), context->numberValue(1)}).toString(), "gx1");
}

TEST(TNLJSContext, HeldValuesSurviveCollectionAndKeepTheirContextAlive) {
  auto context = TNLJSContext::create();
  TNLJSValue counter = context->evaluateScript(
      "(function () { var n = { count: 0 }; return function () { return ++n.count; }; })()");
  // Nothing in the script refers to the closure any more; only native code holds it.
  for (int round = 0; round < 3; ++round) {
    context->evaluateScript(
        "var junk = []; for (var i = 0; i < 20000; ++i) junk.push({i: i}); junk = null;");
    context->collectGarbage();
  }
  EXPECT_EQ(counter.call().toNumber(), 1);
  // A held value keeps its context alive; the context's native functions go with it.
  auto token = std::make_shared<int>(1);
  const std::weak_ptr<int> weakToken = token;
  context->setFunction(context->globalObject(), "f",
                       [token](TNLJSContext& ctx, const std::vector<TNLJSValue>&) {
                         return ctx.numberValue(*token);
                       });
  token.reset();
  context.reset();
  EXPECT_EQ(counter.call().toNumber(), 2);
  EXPECT_FALSE(weakToken.expired());
  counter = TNLJSValue();
  EXPECT_TRUE(weakToken.expired());
}

}  // namespace
