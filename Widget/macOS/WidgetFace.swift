// The widget's face in its three sizes.

import SwiftUI
import WidgetKit

enum Palette {
  static let surface = dynamic(0xFCFBF9, 0x1A1D20)
  static let tile = dynamic(0xF4F3F1, 0x232629)
  static let sunken = dynamic(0xE9E7E1, 0x0E1011)
  static let text1 = dynamic(0x1A1C1E, 0xEDEEEE)
  static let text2 = dynamic(0x4C5156, 0xB4B9BD)
  static let text3 = dynamic(0x60656A, 0x979EA3)
  static let accent = dynamic(0x0B6772, 0x5BC0C4)
  static let axis = dynamic(0xC6C5C4, 0x55585A)
  static let gray = dynamic(0x686D72, 0xC9CDD0)
  static let warning = dynamic(0x8F5200, 0xF0B252)
  static let critical = dynamic(0xB3261E, 0xFF8577)
  static let cpu = dynamic(0x0652A2, 0x6CABF1)
  static let memory = dynamic(0x9870C4, 0x8869B3)
  static let disk = dynamic(0xA53C07, 0xD27332)
  static let network = dynamic(0x338D6B, 0x419A79)

  static func line(of page: String) -> Color {
    switch page {
    case "memory": return memory
    case "disk": return disk
    case "network": return network
    default: return cpu
    }
  }

  private static func dynamic(_ light: UInt32, _ dark: UInt32) -> Color {
    func color(_ hex: UInt32) -> NSColor {
      NSColor(
        srgbRed: CGFloat(hex >> 16 & 255) / 255, green: CGFloat(hex >> 8 & 255) / 255,
        blue: CGFloat(hex & 255) / 255, alpha: 1)
    }
    return Color(
      nsColor: NSColor(name: nil) { appearance in
        appearance.bestMatch(from: [.aqua, .darkAqua]) == .darkAqua ? color(dark) : color(light)
      })
  }
}

func section(_ page: String) -> URL { URL(string: "korvell://page/\(page)") ?? URL(string: "korvell://page")! }

struct WidgetFace: View {
  let entry: DocumentEntry
  @Environment(\.widgetFamily) private var family

  var body: some View {
    if let document = entry.document {
      switch family {
      case .systemSmall: small(document)
      case .systemMedium: header(document, hasDetail: true)
      default: large(document)
      }
    } else {
      Text(Words.localized("Measuring…")).font(.system(size: 12)).foregroundStyle(Palette.text2)
    }
  }

  private var asOf: String? {
    guard entry.isOld, let date = entry.document?.date else { return nil }
    return Words.localized("As of {time}", "time", date.formatted(date: .omitted, time: .shortened))
  }

  private func small(_ document: WidgetDocument) -> some View {
    VStack(spacing: 8) {
      ScoreRing(score: document.score, weight: 10, digits: 40).frame(width: 110, height: 110)
      Text(asOf ?? document.label).font(.system(size: 12, weight: .medium))
        .foregroundStyle(asOf == nil ? Palette.text2 : Palette.warning)
    }
    .widgetURL(section("overview"))
  }

  private func header(_ document: WidgetDocument, hasDetail: Bool) -> some View {
    HStack(alignment: .top, spacing: 16) {
      Link(destination: section("overview")) {
        ScoreRing(score: document.score, weight: hasDetail ? 9 : 8, digits: hasDetail ? 36 : 28)
          .frame(width: hasDetail ? 105 : 84, height: hasDetail ? 105 : 84)
      }
      VStack(alignment: .leading, spacing: hasDetail ? 3 : 6) {
        HStack {
          Text(document.label).font(.system(size: 15, weight: .semibold)).foregroundStyle(Palette.text1)
          Spacer()
          if let asOf { Text(asOf).font(.system(size: 11)).foregroundStyle(Palette.warning) }
        }
        ForEach(Array(document.fixes.enumerated()), id: \.offset) { _, fix in
          Link(destination: section(fix.page)) { FixRow(fix: fix, hasDetail: hasDetail) }
        }
        if document.fixes.isEmpty {
          Text(Words.localized("Nothing to fix")).font(.system(size: 12)).foregroundStyle(Palette.text1)
        }
      }
    }
  }

  private func large(_ document: WidgetDocument) -> some View {
    VStack(alignment: .leading, spacing: 12) {
      header(document, hasDetail: false)
      LazyVGrid(columns: [GridItem(spacing: 8), GridItem()], spacing: 8) {
        ForEach(Array(document.tiles.enumerated()), id: \.offset) { _, tile in
          Link(destination: section(tile.page)) { TileView(tile: tile) }
        }
      }
      if !document.apps.isEmpty {
        Text(Words.localized("Top apps by memory")).font(.system(size: 12, weight: .medium))
          .foregroundStyle(Palette.text2)
        ForEach(Array(document.apps.enumerated()), id: \.offset) { _, app in
          Link(destination: section("memory")) { AppRow(app: app) }
        }
      }
    }
  }
}

struct ScoreRing: View {
  let score: Int
  let weight: Double
  let digits: Double

  var body: some View {
    let share = Double(score) / 100
    let gap = score < 100 ? 0.005 : 0
    ZStack {
      arc(from: gap, to: share - gap, weight: weight, color: Palette.accent)
      if score < 100 { arc(from: share + gap, to: 1 - gap, weight: weight * 0.34, color: Palette.axis) }
      Text("\(score)").font(.system(size: digits, weight: .semibold).monospacedDigit())
        .foregroundStyle(Palette.text1)
    }
    .accessibilityElement(children: .ignore)
    .accessibilityLabel(Words.localized("Health {score} of 100", "score", String(score)))
  }

  private func arc(from: Double, to: Double, weight: Double, color: Color) -> some View {
    Circle().inset(by: self.weight / 2).trim(from: max(0, from), to: max(0, to))
      .stroke(color, lineWidth: weight).rotationEffect(.degrees(-90))
  }
}

struct FixRow: View {
  let fix: WidgetDocument.Fix
  let hasDetail: Bool

  var body: some View {
    HStack(alignment: .firstTextBaseline, spacing: 8) {
      Image(systemName: fix.critical ? "exclamationmark.octagon.fill" : "circle.fill")
        .font(.system(size: fix.critical ? 12 : 6))
        .foregroundStyle(fix.critical ? Palette.critical : Palette.gray).frame(width: 14)
      VStack(alignment: .leading, spacing: 0) {
        Text(fix.title).font(.system(size: 12)).foregroundStyle(Palette.text1)
        if hasDetail { Text(fix.detail).font(.system(size: 11)).foregroundStyle(Palette.text3) }
      }
      .lineLimit(1)
      Spacer(minLength: 0)
    }
  }
}

struct TileView: View {
  let tile: WidgetDocument.Tile

  private var title: String {
    switch tile.page {
    case "memory": return Words.localized("Memory")
    case "disk": return Words.localized("Disk")
    case "network": return Words.localized("Network")
    default: return "CPU"
    }
  }

  var body: some View {
    VStack(alignment: .leading, spacing: 4) {
      HStack {
        Text(title).font(.system(size: 12)).foregroundStyle(Palette.text2)
        Spacer()
        Text(tile.detail).font(.system(size: 11)).foregroundStyle(Palette.text3).lineLimit(1)
      }
      HStack(alignment: .bottom) {
        Text(tile.value).font(.system(size: 18, weight: .semibold).monospacedDigit())
          .foregroundStyle(Palette.text1).lineLimit(1)
        Spacer()
        Curve(points: tile.points, top: tile.maxValue)
          .stroke(Palette.line(of: tile.page), lineWidth: 1.5).frame(width: 42, height: 20)
          .environment(\.layoutDirection, .leftToRight)
      }
    }
    .padding(10)
    .background(Palette.tile, in: RoundedRectangle(cornerRadius: 9))
  }
}

/// The last half hour; time runs to the right in every language.
struct Curve: Shape {
  let points: [Double]
  let top: Double?

  func path(in box: CGRect) -> Path {
    guard points.count > 1 else { return Path() }
    let highest = top ?? (points.max() ?? 0) * 1.1
    return Path { path in
      for (index, point) in points.enumerated() {
        let share = highest > 0 ? min(max(point / highest, 0), 1) : 0
        let at = CGPoint(
          x: box.minX + box.width * Double(index) / Double(points.count - 1), y: box.maxY - share * box.height)
        if index == 0 { path.move(to: at) } else { path.addLine(to: at) }
      }
    }
  }
}

struct AppRow: View {
  let app: WidgetDocument.TopApp

  var body: some View {
    HStack {
      Text(app.name).font(.system(size: 12)).foregroundStyle(Palette.text1).lineLimit(1)
      Spacer()
      GeometryReader { place in
        ZStack(alignment: .leading) {
          Capsule().fill(Palette.sunken)
          Capsule().fill(Palette.memory).frame(width: place.size.width * min(max(app.fraction, 0), 1))
        }
      }
      .frame(width: 96, height: 4)
      Text(app.memory).font(.system(size: 12).monospacedDigit()).foregroundStyle(Palette.text1)
        .frame(width: 70, alignment: .trailing)
    }
  }
}
