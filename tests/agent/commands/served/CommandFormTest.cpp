// The form of a command.
#include "agent/commands/served/CommandTable.h"

#include <gmock/gmock.h>

#include <functional>
#include <nlohmann/json.hpp>
#include <set>

#include "agent/commands/served/FormWalk.h"
#include "agent/commands/served/Placeholders.h"

namespace ZelAgent {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(CommandForm, TheNameIsTheKeywordsAtTheBeginning) {
  EXPECT_THAT(CommandForm("show trace [N]").name(), ElementsAre("show", "trace"));
  EXPECT_THAT(CommandForm("vrf NAME id N").name(), ElementsAre("vrf"));
  EXPECT_THAT(CommandForm("decap-nh on|off").name(), ElementsAre("decap-nh"));
  EXPECT_THAT(CommandForm("reload").name(), ElementsAre("reload"));
}

TEST(CommandForm, HasArgumentsIfWordsFollowTheName) {
  EXPECT_TRUE(CommandForm("show trace [N]").hasArguments());
  EXPECT_FALSE(CommandForm("show vrfs").hasArguments());
}

TEST(CommandForm, ListsTheChoicesForTheNextWord) {
  const CommandForm form("prefix-lens ipv4|ipv6 NAME LENGTH...");
  EXPECT_THAT(form.choicesAfter({}), ElementsAre("prefix-lens"));
  EXPECT_THAT(form.choicesAfter({"prefix-lens"}), ElementsAre("ipv4", "ipv6"));
  EXPECT_THAT(form.choicesAfter({"prefix-lens", "ipv6"}), ElementsAre("NAME"));
  EXPECT_THAT(form.choicesAfter({"prefix-lens", "ipv6", "red", "8", "16"}), ElementsAre("LENGTH"));
}

TEST(CommandForm, NothingFollowsWordsThatAreNotItsBeginning) {
  const CommandForm form("vrf NAME add [id N]");
  EXPECT_THAT(form.choicesAfter({"fallback"}), IsEmpty());
  EXPECT_THAT(form.choicesAfter({"vrf", "red", "remove"}), IsEmpty());
  EXPECT_THAT(form.choicesAfter({"vrf", "red", "add", "id", "7"}), IsEmpty());
  EXPECT_THAT(form.choicesAfter({"vrf", "red", "add"}), ElementsAre("id"));
}

TEST(CommandForm, OptionalWordsMayBeLeftOut) {
  const CommandForm form("show rules [interface INTERFACE] [vrf VRF] [failed]");
  EXPECT_THAT(form.name(), ElementsAre("show", "rules"));
  EXPECT_THAT(form.choicesAfter({"show", "rules"}), ElementsAre("interface", "vrf", "failed"));
  EXPECT_THAT(form.choicesAfter({"show", "rules", "interface"}), ElementsAre("INTERFACE"));
  EXPECT_THAT(form.choicesAfter({"show", "rules", "interface", "e1"}),
              ElementsAre("vrf", "failed"));
  EXPECT_THAT(form.choicesAfter({"show", "rules", "vrf", "red"}), ElementsAre("failed"));
  EXPECT_THAT(form.choicesAfter({"show", "rules", "failed"}), IsEmpty());
  EXPECT_THAT(CommandForm("get TYPE [KEY...]").choicesAfter({"get", "T", "a"}), ElementsAre("KEY"));
}

TEST(CommandForm, MayEndBeforeAnOptionalPart) {
  const CommandForm form("vrf NAME add [id N]");
  const auto mayEndAfter = [&](const std::vector<std::string>& words) {
    CommandForm::Places places = form.start();
    for (const std::string& word : words)
      places = form.after(places, word);
    return form.mayEndAt(places);
  };
  EXPECT_FALSE(mayEndAfter({"vrf", "red"}));
  EXPECT_TRUE(mayEndAfter({"vrf", "red", "add"}));
  EXPECT_FALSE(mayEndAfter({"vrf", "red", "add", "id"}));
  EXPECT_TRUE(mayEndAfter({"vrf", "red", "add", "id", "7"}));
  EXPECT_FALSE(mayEndAfter({"vrf", "red", "add", "id", "7", "8"}));
}

// Visits each place of the table that has choices.
void visitChoices(const FormWalk& walk, const std::function<void(const FormWalk::Choice&)>& visit) {
  if (walk.words().size() > 8) return;  // repeated words
  for (const FormWalk::Choice& choice : walk.choices()) {
    visit(choice);
    FormWalk next = walk;
    next.take(isPlaceholder(choice.text) ? "x" : choice.text);
    visitChoices(next, visit);
  }
}

TEST(CommandTable, EachPlaceholderAndEachSharedKeywordHasHelp) {
  visitChoices(FormWalk(), [](const FormWalk::Choice& choice) {
    if (isPlaceholder(choice.text)) {
      EXPECT_NE(placeholderHelp(choice.text), "") << choice.text;
    } else if (choice.rows.size() > 1) {
      EXPECT_NE(keywordHelp(choice.text), "") << choice.text;
    }
  });
}

TEST(CommandTable, EachFormIsInOneRowAndHasHelp) {
  std::set<std::string> forms;
  for (const CommandRow& row : commandTable()) {
    EXPECT_TRUE(forms.insert(row.form).second) << row.form;
    EXPECT_FALSE(CommandForm(row.form).name().empty()) << row.form;
    EXPECT_STRNE(row.help, "") << row.form;
  }
}

TEST(CommandTable, RowsOfOneNameHaveOneCommand) {
  std::map<std::vector<std::string>, Command> commands;
  for (const CommandRow& row : commandTable()) {
    const auto known = commands.emplace(CommandForm(row.form).name(), row.run).first;
    EXPECT_EQ(known->second, row.run) << row.form;
  }
}

}  // namespace
}  // namespace ZelAgent
