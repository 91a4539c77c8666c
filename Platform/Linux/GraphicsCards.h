#pragma once
// Graphics cards: amdgpu through sysfs, NVIDIA through its management library, Intel's i915 through what it
// counts for each program. A card that its driver has put to sleep is left asleep and reads as idle. Cards of
// other drivers are named but not read.

#include "Platform/Linux/DRMClients.h"
#include "Platform/Linux/FileReader.h"
#include "Platform/Linux/NvidiaLibrary.h"

#include <string>
#include <vector>

namespace korvell {

class GraphicsCards {
public:
  enum class Driver { amdgpu, nvidia, i915, other };
  struct Card {
    Driver driver = Driver::other;
    std::string folder;  ///< of the PCI device
    std::string address; ///< on the PCI bus
    bool mayBeAsleep = false;
  };

  /// `pciIDs`: where the list of PCI names may be.
  GraphicsCards(std::string proc, std::string sys, std::vector<std::string> pciIDs,
                std::string nvidiaLibrary);

  /// Looks for cards anew. Milliseconds.
  void find(FileReader& reader);
  std::vector<GPUCounters> counters(FileReader& reader);
  /// What to call them together; empty without a card that has a name.
  std::string name(FileReader& reader) const;

  const std::vector<Card>& cards() const { return cards_; }
  bool isAsleep(const Card& card, FileReader& reader) const;
  /// Of a card that is awake; nothing when its driver tells nothing.
  std::optional<GPUCounters> read(const Card& card, FileReader& reader);

private:
  std::vector<Card> drmCards(FileReader& reader) const;
  std::vector<Card> nvidiaCards(FileReader& reader) const;
  std::optional<GPUCounters> intel(const Card& card, FileReader& reader);
  std::optional<GPUCounters> amd(const Card& card, FileReader& reader) const;
  std::string cardName(const Card& card, FileReader& reader) const;

  std::string proc_, sys_;
  std::vector<std::string> pciIDs_;
  NvidiaLibrary nvidia_;
  DRMClients clients_;
  std::vector<Card> cards_;
};

} // namespace korvell
