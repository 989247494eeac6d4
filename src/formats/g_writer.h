// formats/g_writer.h - an STG as .g text, and the files in which a changed STG is kept.
// Here:      the text; saving it, and saving a prefix as *.mci.
// Not here:  the names in the text (formats/g_names.h), the format *.mci (formats/mci_writer.h).
// The text keeps no initial values of signals unless they are wanted, no names of implicit places,
// and no nodes without arcs, but for marked places.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>

#include "net/process.h"

namespace vorel::formats {

// Of signals all of whose edges are toggles no edge tells the initial value.
enum class GInitialValues : std::uint8_t { left_out, of_toggles };

// Writes and flushes the text. False after an error: a write fails, or the name of a signal does
// not suit the format; nothing is written then.
bool write_g(const net::Stg& stg, std::ostream& stream,
             GInitialValues values = GInitialValues::left_out);

bool save_g(const net::Stg& stg, const std::string& file_name);

// As write_stg_mci() of formats/mci_writer.h does, or write_mci() for a net without signals.
bool save_mci(const net::StgPrefix& prefix, const std::string& file_name);
bool save_mci(const net::NetPrefix& prefix, const std::string& file_name);

// "NAME.g" and "NAME.mci": the former only appears if the latter has been written.
bool save_g_and_mci(const net::StgPrefix& prefix, const std::string& name);

}  // namespace vorel::formats
