#pragma once
// Makes the share card: a picture in the downloads folder and on the clipboard, and a word about it where
// the user looks. Main thread only.

#include "App/Model.h"
#include "Base/Lifeline.h"
#include "Base/LocalTime.h"
#include "Base/Result.h"
#include "UI/Kit/Banner.h"
#include "UI/Kit/Theme.h"

#include <QPointer>

#include <functional>
#include <string>

namespace korvell {

class CardSharing {
public:
  struct Services {
    Model& model;
    const TimeZone& zone;
    const Theme& theme;
    std::function<std::string()> downloads; ///< the folder; called on the queue below
    std::function<Queue&()> work;           ///< for what waits for the disk
    Queue& main;
    std::function<void(const std::string& path)> showFile;
  };
  explicit CardSharing(Services services) : services_(std::move(services)) {}
  CardSharing(const CardSharing&) = delete;
  CardSharing& operator=(const CardSharing&) = delete;

  /// Nothing before the first report. The banner may be gone when the file is written.
  void share(Banner& banner);

private:
  void tell(Banner& banner, const Result<std::string>& saved) const;

  const Services services_;
  Lifeline<CardSharing> life_{*this};
};

} // namespace korvell
