// SPDX-License-Identifier: MIT
#include "cli/commands/command.h"
#include <CLI/CLI.hpp>
#include <cmath>
#include "core/project/failure.h"
#include "core/project/text.h"

namespace meridor {
namespace {

/// A check of numbers. Texts that are no numbers are left to the conversion, which refuses them.
template <class Holds> CLI::Validator numberThat(Holds holds, const char *isNot)
{
    return CLI::Validator(
        [holds, isNot](std::string &text) {
            double value = 0;
            return !CLI::detail::lexical_cast(text, value) || holds(value) ? std::string()
                                                                           : text + isNot;
        },
        std::string());
}

const CLI::Validator kFinite =
    numberThat([](double value) { return std::isfinite(value); }, " is no finite number");
const CLI::Validator kNotNegative =
    numberThat([](double value) { return value >= 0; }, " is below 0");
const CLI::Validator kPositive =
    numberThat([](double value) { return value > 0; }, " is not above 0");

} // namespace

Setting &Setting::required()
{
    mOption->required();
    return *this;
}

Setting &Setting::oneOf(const QStringList &values)
{
    std::vector<std::string> names;
    for (const QString &value : values)
        names.push_back(value.toStdString());
    mOption->check(CLI::IsMember(names));
    return *this;
}

Setting &Setting::range(int least, int most)
{
    mOption->check(CLI::Range(least, most));
    return *this;
}

Setting &Setting::range(double least, double most)
{
    mOption->check(CLI::Range(least, most));
    return *this;
}

Setting &Setting::notNegative()
{
    mOption->check(kNotNegative);
    return *this;
}

Setting &Setting::positive()
{
    mOption->check(kPositive);
    return *this;
}

Setting &Setting::shown()
{
    mOption->capture_default_str();
    return *this;
}

Setting &Setting::shown(const char *text)
{
    mOption->default_str(text);
    return *this;
}

Setting &Setting::partedBy(char delimiter)
{
    mOption->delimiter(delimiter);
    return *this;
}

Setting &Setting::values(int least, int most)
{
    mOption->expected(least, most);
    mOption->allow_extra_args(most > least);
    return *this;
}

bool Setting::isGiven() const
{
    return mOption->count() > 0;
}

Command Command::verb(const char *name, const char *help) const
{
    return Command(*mApp->add_subcommand(name, help));
}

Command Command::hiddenVerb(const char *name) const
{
    return Command(*mApp->add_subcommand(name)->group(""));
}

void Command::needsVerb() const
{
    mApp->require_subcommand(1);
}

Setting Command::text(const char *name, QString &target, const char *help) const
{
    return Setting(
        mApp->add_option_function<std::string>(
                name, [&target](const std::string &text) { target = QString::fromStdString(text); },
                help)
            ->type_name("TEXT"));
}

Setting Command::texts(const char *name, QStringList &target, const char *help) const
{
    return Setting(mApp->add_option_function<std::vector<std::string>>(
                           name,
                           [&target](const std::vector<std::string> &texts) {
                               for (const std::string &text : texts)
                                   target.append(QString::fromStdString(text));
                           },
                           help)
                       ->type_name("TEXT")
                       ->allow_extra_args(false));
}

Setting Command::list(const char *name, QStringList &target, const char *help) const
{
    return Setting(mApp->add_option_function<std::vector<std::string>>(
                           name,
                           [name, &target](const std::vector<std::string> &texts) {
                               try {
                                   for (const std::string &text : texts)
                                       target += listItems(QString::fromStdString(text));
                               } catch (const Failure &failure) {
                                   throw CLI::ValidationError(name, failure.what());
                               }
                           },
                           help)
                       ->type_name("LIST")
                       ->allow_extra_args(false));
}

Setting Command::number(const char *name, int &target, const char *help) const
{
    return Setting(mApp->add_option(name, target, help));
}

Setting Command::number(const char *name, double &target, const char *help) const
{
    return Setting(mApp->add_option(name, target, help)->check(kFinite));
}

Setting Command::numbers(const char *name, QVector<double> &target, const char *help) const
{
    return Setting(mApp->add_option_function<std::vector<double>>(
                           name,
                           [&target](const std::vector<double> &numbers) {
                               target = QVector<double>(numbers.begin(), numbers.end());
                           },
                           help)
                       ->check(kFinite));
}

Setting Command::flag(const char *name, bool &target, const char *help) const
{
    if (*name != '!')
        return Setting(mApp->add_flag(name, target, help));
    return Setting(mApp->add_flag_callback(
        name + 1, [&target] { target = false; }, help));
}

void Command::footer(const char *text) const
{
    mApp->footer(text);
}

void Command::chosen(const std::function<void()> &then) const
{
    mApp->callback(then);
}

} // namespace meridor
