// SPDX-License-Identifier: MIT
#include "cli/commands/projectEdit.h"
#include "core/project/failure.h"
#include "core/project/safeFile.h"

namespace meridor {

void targetOptions(const Command &command, EditTarget &target, Context &context)
{
    command.text("--output", target.output, "Write here (default: the project itself)");
    overwriteOption(command, context);
}

namespace {

void edit(const EditTarget &target, const Context &context, Values values,
          const std::function<Tell(Session &)> &change)
{
    refuseStandardOutput(target.file(), "a project");
    requireWritable(target.file(), context.overwrite || target.output.isEmpty());
    Session session(context.session, context.user);
    session.reserve(target.file());
    values == Values::Packed ? session.loadPacked(target.project) : session.load(target.project);
    const Tell tell = change(session);
    session.save(target.file());
    if (tell)
        tell();
}

} // namespace

void editProject(const EditTarget &target, const Context &context,
                 const std::function<void(Session &)> &change, Values values)
{
    edit(target, context, values, [&change](Session &session) {
        change(session);
        return Tell();
    });
}

void editAndTell(const EditTarget &target, const Context &context,
                 const std::function<Tell()> &change)
{
    edit(target, context, Values::Loaded, [&change](Session &) { return change(); });
}

void editOrLook(bool stores, const char *option, const EditTarget &target, const Context &context,
                const std::function<Tell()> &work)
{
    if (stores) {
        editAndTell(target, context, work);
        return;
    }
    if (!target.output.isEmpty())
        failUsage(QStringLiteral("--output does not apply without %1, which changes the project")
                      .arg(QLatin1String(option)));
    Session session(context.session, context.user);
    session.loadPacked(target.project);
    work()();
}

} // namespace meridor
