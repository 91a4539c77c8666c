#pragma once
// What a scraper's request is answered: the little of HTTP/1.1 that it takes. Pure.
//
// The path is "/metrics", the method GET or HEAD, and the Host that of this machine's own loopback: a page in
// a browser that has this machine's address under a name of its own gets nothing.

#include "Agents/MetricsText.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace korvell {

/// The figures at this moment; empty when there are none.
using MetricsBody = std::function<std::string(MetricsFormat)>;

/// How many bytes of what was received are a request's head, with the empty line behind it; nothing while it
/// is not complete.
std::optional<std::size_t> lengthOfHead(std::string_view received);

/// The whole answer, after which the connection is closed.
std::string answerToScrape(std::string_view head, const MetricsBody& body);
/// To a head of more bytes than anybody needs.
std::string answerToTooMuch();

/// True for the names and addresses of the loopback, with any port or none: "localhost:9494", "127.0.0.1",
/// "[::1]:80".
bool isLoopbackHost(std::string_view host);

} // namespace korvell
