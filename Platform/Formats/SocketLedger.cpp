#include "Platform/Formats/SocketLedger.h"

#include "Base/Record.h"

#include <algorithm>

namespace korvell {

namespace {

/// Cycles for which a socket without a holder is left alone, doubled each time: another container's or the
/// kernel's own will never be found.
constexpr std::uint32_t firstPatience = 15;
constexpr std::uint32_t longestPatience = 960;
/// Cycles that a socket is remembered after it was last listed: its final counters come from a work queue of
/// the kernel, and not at all when there were too many at once.
constexpr std::uint32_t lastWords = 2;
/// Remembered remote ends; beyond that the memory starts anew.
constexpr std::size_t maximumPeers = 4096;

std::uint64_t advance(std::uint64_t now, std::uint64_t before) { return now > before ? now - before : 0; }

} // namespace

std::size_t SocketLedger::PeerHash::operator()(const Peer& peer) const {
  std::size_t seed = hashCombine(peer.user, peer.port);
  for (const auto byte : peer.address) seed = hashCombine(seed, byte);
  return seed;
}

void SocketLedger::update(std::span<const SocketRecord> alive, std::span<const SocketRecord> closed) {
  const bool firstLook = cycle_ == 0;
  ++cycle_;
  wanted_.clear();
  listeners_.clear();
  listening_.clear();
  for (const auto& record : alive) {
    auto [entry, isNew] = sockets_.try_emplace(record.cookie);
    auto& socket = entry->second;
    if (isNew && firstLook) socket.credited = {record.received, record.sent};
    socket.record = record;
    socket.cycle = cycle_;
    if (record.listening && record.inode) listening_[record.inode] = record.cookie;
    if (socket.holder) {
      credit(socket, record);
      if (record.listening) listeners_.try_emplace(record.localPort, socket.holder);
    } else if (record.inode && socket.lookAgain <= cycle_) {
      wanted_[record.inode] = record.cookie;
    }
  }
  // After the living: a socket may be on both lists, having closed since it was listed.
  for (const auto& record : closed) close(record);
  std::erase_if(sockets_, [this](const auto& entry) { return entry.second.cycle + lastWords < cycle_; });
}

void SocketLedger::close(const SocketRecord& record) {
  const auto known = sockets_.find(record.cookie);
  Socket unseen;
  auto& socket = known == sockets_.end() ? unseen : known->second;
  if (!socket.holder) socket.holder = likelyHolder(record);
  if (socket.holder) credit(socket, record);
  if (known == sockets_.end()) return;
  // Nobody is to be looked for any more.
  for (auto* inodes : {&wanted_, &listening_})
    if (const auto entry = inodes->find(socket.record.inode);
        entry != inodes->end() && entry->second == record.cookie)
      inodes->erase(entry);
  sockets_.erase(known);
}

ProcessID SocketLedger::likelyHolder(const SocketRecord& record) const {
  if (const auto listener = listeners_.find(record.localPort); listener != listeners_.end())
    return listener->second;
  const auto peer = peers_.find({record.user, record.remotePort, record.remoteAddress});
  return peer == peers_.end() ? 0 : peer->second;
}

void SocketLedger::credit(Socket& socket, const SocketRecord& record) {
  auto& total = totals_[socket.holder];
  total.in += advance(record.received, socket.credited.in);
  total.out += advance(record.sent, socket.credited.out);
  socket.credited = {std::max(record.received, socket.credited.in),
                     std::max(record.sent, socket.credited.out)};
}

void SocketLedger::assignListener(Socket& socket, ProcessID pid) {
  if (!socket.holder) {
    socket.holder = pid;
    credit(socket, socket.record);
    listeners_.try_emplace(socket.record.localPort, pid);
  } else if (socket.holder != pid &&
             std::find(socket.sharers.begin(), socket.sharers.end(), pid) == socket.sharers.end()) {
    socket.sharers.push_back(pid);
    totals_.try_emplace(pid);
  }
}

void SocketLedger::assign(std::uint32_t inode, ProcessID pid) {
  if (const auto listener = listening_.find(inode); listener != listening_.end())
    return assignListener(sockets_.at(listener->second), pid);
  const auto want = wanted_.find(inode);
  if (want == wanted_.end()) return;
  auto& socket = sockets_.at(want->second);
  wanted_.erase(want);
  socket.holder = pid;
  credit(socket, socket.record);
  const auto& record = socket.record;
  if (peers_.size() >= maximumPeers) peers_.clear();
  peers_[{record.user, record.remotePort, record.remoteAddress}] = pid;
}

void SocketLedger::settle() {
  std::erase_if(wanted_, [this](const auto& entry) { return sockets_.at(entry.second).holder != 0; });
}

void SocketLedger::giveUp() {
  settle();
  for (const auto& [inode, cookie] : wanted_) {
    auto& socket = sockets_.at(cookie);
    socket.patience = std::clamp(socket.patience * 2, firstPatience, longestPatience);
    socket.lookAgain = cycle_ + socket.patience;
  }
  wanted_.clear();
}

void SocketLedger::findHolders(Seconds now, const std::function<void(Walk)>& scan) {
  if (wanted_.empty()) return;
  scan(Walk::thoseThatRan);
  settle();
  if (wanted_.empty() || now - lastFullScan_ < fullScanInterval) return;
  lastFullScan_ = now;
  scan(Walk::allOthers);
  giveUp();
}

ByteCounters SocketLedger::total(ProcessID pid) const {
  const auto total = totals_.find(pid);
  return total == totals_.end() ? ByteCounters{} : total->second;
}

void SocketLedger::forget(ProcessID pid) {
  if (totals_.erase(pid) == 0) return; // it never held a socket
  for (auto& [cookie, socket] : sockets_) {
    std::erase(socket.sharers, pid);
    if (socket.holder != pid) continue;
    socket.holder = 0;
    if (socket.sharers.empty()) continue;
    socket.holder = socket.sharers.front();
    socket.sharers.erase(socket.sharers.begin());
  }
  std::erase_if(peers_, [pid](const auto& entry) { return entry.second == pid; });
  std::erase_if(listeners_, [pid](const auto& entry) { return entry.second == pid; });
}

PortsByPID SocketLedger::listeningPorts() const {
  PortsByPID ports;
  for (const auto& [cookie, socket] : sockets_)
    if (socket.record.listening && socket.holder) {
      ports[socket.holder].push_back(socket.record.localPort);
      for (const auto pid : socket.sharers) ports[pid].push_back(socket.record.localPort);
    }
  for (auto& [pid, list] : ports) {
    std::sort(list.begin(), list.end());
    list.erase(std::unique(list.begin(), list.end()), list.end());
  }
  return ports;
}

} // namespace korvell
