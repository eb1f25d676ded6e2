// SPDX-License-Identifier: MIT
// What the test program does when it is started again as a child of itself.
#ifndef KORA4_TESTS_MULTIPROCESS_ROLES_H
#define KORA4_TESTS_MULTIPROCESS_ROLES_H

#include <string>

namespace kora4::test {

// The argument that makes a child of a test program: "--role=<name>".
inline constexpr char cRoleArgument[] = "--role=";

// Another client of the store, led by command lines on its standard input, each answered
// by one line on its standard output; it ends with its input.
//   raw ...        see RunRawCommand; "ok"
//   open sta|mta   makes a thread with that apartment and an initialised object; the result
//   watch          registers a callback at the object; the result
//   log <count>    waits for that many calls; all of them, separated by '|'
//   NAME ...       see RunApiCommand; the result
inline constexpr char cPeerRole[] = "peer";

// A client that makes one change after another and never ends by itself but after a minute.
// Says "ready", waits for a line with the seed of its random choices, and goes on.
inline constexpr char cRestlessRole[] = "restless";

// A client with one object, that is not initialised yet. Says "ready"; then, line by line:
//   NAME ...                   see RunApiCommand; the result
//   count NAME ...             the same; how many registry writes it made
//   die before|after N NAME ...   ends without any goodbye, with the code cKilled, before or
//                              after registry write N, the first is 0
inline constexpr char cDoomedRole[] = "doomed";

// The exit code of the role.
int RunRole(const std::string& role);

}  // namespace kora4::test

#endif  // KORA4_TESTS_MULTIPROCESS_ROLES_H
