// What a recording MAPI library does at a call, as environment variables tell. Without any it is a library that does
// all that it is asked.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// What becomes of one call.
struct Action {
    bool performs = true;    // whether the call does what it is for
    std::int32_t result = 0; // of a call that doesn't
    std::string word;        // what it does besides, or otherwise: each call knows its own words
};

/// The action for a call, counted by its name. CORVANE_MAPI_SCRIPT holds rules "CALL=ACTION" or "CALL#n=ACTION" (the
/// n-th call of that name alone), separated by blanks. A crash happens at once.
///
///   IMAPISession::ShowForm=80040113    fails with that code, in hexadecimal digits
///   MAPILogonEx#2=nothing              succeeds and gives nothing
///   IAttach::SaveChanges=read          dies: read, divide, overflow
///   IAttach::SaveChanges=read:dying    dies so, and from then on whenever something is given back
///   IMAPIFolder::CreateMessage=unlink:x.txt    removes that file and goes on
///   any other word                     is the call's own
Action ActionOf(std::string_view call);

/// A row of the table of stores. CORVANE_MAPI_STORES lists them, separated by blanks, as "FLAGS" or "FLAGS/TYPE" in
/// hexadecimal digits; "none" stands for a table without rows. By default there is one, "2/21".
///
///   error    a row whose flags are an error that looks like the best of flags
///   noid:4   a row without an identifier
///   bare     a row without any property
struct StoreRow {
    std::uint32_t flags = 0;
    std::uint32_t type = 0;
    bool flagsAreError = false;
    bool hasId = true;
    bool hasProperties = true;
};

std::vector<StoreRow> StoreRows();
