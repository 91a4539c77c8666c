#include "UI/Shell/CardSharing.h"

#include "Base/Localization.h"
#include "UI/Share/CardFile.h"
#include "UI/Share/ShareCardPainter.h"

#include <QClipboard>
#include <QGuiApplication>

namespace korvell {

void CardSharing::share(Banner& banner) {
  const auto card = shareCard(services_.model, services_.zone);
  if (!card) return;
  banner.dismiss();
  const auto picture = shareCardPicture(*card, services_.theme);
  QGuiApplication::clipboard()->setImage(picture);
  services_.work().async([picture, name = card->fileName, downloads = services_.downloads,
                          &main = services_.main, told = QPointer<Banner>(&banner), watch = life_.watch()] {
    auto saved = saveNewPicture(picture, downloads(), name);
    main.async([saved = std::move(saved), told, watch] {
      const auto* self = watch.get();
      if (self && told) self->tell(*told, saved);
    });
  });
}

void CardSharing::tell(Banner& banner, const Result<std::string>& saved) const {
  if (!saved)
    return banner.say(Tone::warning,
                      localized("The card is on the clipboard, but could not be saved to Downloads."),
                      saved.reason());
  const auto name = saved->substr(saved->rfind('/') + 1);
  banner.say(Tone::good, localized("The card is in Downloads and on the clipboard."), name);
  banner.offer(localized("Show"), [show = services_.showFile, path = *saved] { show(path); });
}

} // namespace korvell
