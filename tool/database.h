#pragma once

#include <memory>
#include <string>

#include "recovery/DlxSQLiteParser.h"
#include "tool/interruption.h"

namespace zkmb {

struct Context;

/// A database file after the engine has read it.
struct ParsedDatabase {
    std::shared_ptr<ZkMobileBackup::DlxSQLiteParser> parser;
    bool completed = false;
    Interruption::Registration stopRequest{};  ///< Ctrl-C stops the parser, also while it shapes tables
};

/// Reads a database file, damaged or not, until its end or until Ctrl-C. Throws Failure when it cannot be opened and
/// warns when it does not begin like a database.
ParsedDatabase parseDatabase(const std::string& path, Context& context);

}  // namespace zkmb
