#include "UI/Panel/PanelPage.h"

#include "UI/Parts/Figures.h"

namespace korvell {

PanelPage panelPage(const Model& model, UsageKey sortedBy, std::optional<double> weekScore,
                    bool hasBatterySettings, const SoundState* sound) {
  PanelPage page{.head = healthHead(model, weekScore, hasBatterySettings),
                 .sortedBy = sortedBy,
                 .apps = topApps(model, sortedBy, PanelPage::mostApps)};
  const auto found = page.head.findings.size();
  if (found > PanelPage::mostFindings)
    page.more = counted(std::int64_t(found - PanelPage::mostFindings), "1 more", "{n} more");
  for (auto& tile : measureTiles(model))
    if (tile.section != SidebarItem::gpu && tile.section != SidebarItem::energy)
      page.tiles.push_back(std::move(tile));
  if (!sound) return page;
  for (auto& row : soundPage(*sound).apps)
    if (row.isPlaying && page.sounds.size() < PanelPage::mostSounds) page.sounds.push_back(std::move(row));
  return page;
}

} // namespace korvell
