#pragma once

namespace quillon {

// Why a document could not be read completely. Whatever was read before the fault is kept.
enum class ParseError {
    None,
    Empty,           // no markup at all
    NotWellFormed,   // XML syntax error; the message says where
    UnknownFormat,   // well-formed, but not a feed (or not an outline list)
    EntityExpansion, // internal entities would expand beyond the allowed size
    TooDeep,         // elements nest deeper than the reader follows
};

} // namespace quillon
