// The document that Korvell writes (docs/widget.md), in the widget's language where it is told in it. Members that are
// not known here are left alone; a document that lacks one of these, or has one of another type, is refused as a whole.

import Foundation

struct WidgetDocument: Decodable {
  struct Fix: Decodable {
    var title: String
    var detail: String
    let critical: Bool
    let page: String
  }
  struct Tile: Decodable {
    let page: String
    var value: String
    var detail: String
    let points: [Double]
    let maxValue: Double?
  }
  struct TopApp: Decodable {
    let name: String
    let bundlePath: String?
    var memory: String
    let fraction: Double
  }

  let date: Date
  let score: Int
  var label: String
  var fixes: [Fix]
  var tiles: [Tile]
  var apps: [TopApp]

  /// The document's texts in another language, in the same order.
  struct Texts: Decodable {
    struct Fix: Decodable {
      let title: String?
      let detail: String?
    }
    struct Tile: Decodable {
      let value: String?
      let detail: String?
    }
    struct TopApp: Decodable {
      let memory: String?
    }

    let label: String?
    let fixes: [Fix]?
    let tiles: [Tile]?
    let apps: [TopApp]?
  }

  private struct Languages: Decodable {
    enum CodingKeys: String, CodingKey {
      case texts = "in"
    }

    let texts: [String: Texts]
  }

  /// Below the user's own home folder: the sandbox has another one.
  static var url: URL {
    let entry = getpwuid(getuid())
    let home = entry.map { String(cString: $0.pointee.pw_dir) } ?? NSHomeDirectory()
    return URL(fileURLWithPath: home)
      .appendingPathComponent("Library/Application Support/Korvell/Widget/widget.json")
  }

  static func read() -> WidgetDocument? {
    guard let data = try? Data(contentsOf: url), data.count <= mostBytes,
      var document = try? JSONDecoder().decode(WidgetDocument.self, from: data),
      (0...100).contains(document.score),
      document.apps.allSatisfy({ (0...1).contains($0.fraction) })
    else { return nil }
    // Texts that can't be read leave the English ones.
    let languages = try? JSONDecoder().decode(Languages.self, from: data)
    if let texts = languages?.texts[Words.language] { document.speak(texts) }
    return document
  }

  private static let mostBytes = 256 << 10

  /// A list of another length says something else, and is left out.
  private mutating func speak(_ texts: Texts) {
    label = texts.label ?? label
    if let others = texts.fixes, others.count == fixes.count {
      for (index, other) in others.enumerated() {
        fixes[index].title = other.title ?? fixes[index].title
        fixes[index].detail = other.detail ?? fixes[index].detail
      }
    }
    if let others = texts.tiles, others.count == tiles.count {
      for (index, other) in others.enumerated() {
        tiles[index].value = other.value ?? tiles[index].value
        tiles[index].detail = other.detail ?? tiles[index].detail
      }
    }
    if let others = texts.apps, others.count == apps.count {
      for (index, other) in others.enumerated() {
        apps[index].memory = other.memory ?? apps[index].memory
      }
    }
  }
}
