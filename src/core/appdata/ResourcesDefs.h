#pragma once

/// Words of the assets database.
namespace ResourcesDefs {

/// The remote environment that a row of the endpoint table describes. The numbers are those of the table.
enum class RemoteType : int {
    None = -1,       ///< no environment
    Production = 0,  ///< what customers use; exactly one row of a valid table
    Staging = 1,     ///< the next release, tried out before it is shipped
    Development = 2, ///< work in progress
};

/// The language of the user interface's strings.
enum class RcsLanguage : int {
    Italian = 0,
    English = 1,
};

} // namespace ResourcesDefs
