#pragma once

#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace ZkMobileBackup {

/// What a run of the tool left behind.
struct ToolResult {
    int status = -1;  ///< exit status; -1 when a signal ended the tool
    std::string output;
    std::string errors;

    /// Standard output as JSON; not valid JSON gives a discarded value.
    nlohmann::json json() const { return nlohmann::json::parse(output, nullptr, false); }
};

/// Runs the built example that is shown to newcomers.
ToolResult runExample(const std::vector<std::string>& arguments);

/// Runs the built tool with these arguments, its time zone being UTC and its folder for application data a new one.
ToolResult runTool(const std::vector<std::string>& arguments);

/// The same with Ctrl-C pressed before the tool has begun.
ToolResult runInterruptedTool(const std::vector<std::string>& arguments);

/// The same with standard output going to a file or device that exists.
ToolResult runToolWithOutput(const std::string& path, const std::vector<std::string>& arguments);

/// Variables of the environment and their values; an empty value is taken for none.
using Environment = std::map<std::string, std::string>;

/// The same with some variables of the environment set.
ToolResult runToolWith(const Environment& environment, const std::vector<std::string>& arguments);

/// The same as a user without a password entry. Only the super-user may do so.
ToolResult runToolAsNobodyKnown(const Environment& environment, const std::vector<std::string>& arguments);

}  // namespace ZkMobileBackup
