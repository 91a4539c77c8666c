// The document that Korvell writes (docs/widget.md). Members that are not known here are left alone; a document that
// lacks one of these, or has one of another type, is refused as a whole.

import Foundation

struct WidgetDocument: Decodable {
  struct Fix: Decodable {
    let title: String
    let detail: String
    let critical: Bool
    let page: String
  }
  struct Tile: Decodable {
    let page: String
    let value: String
    let detail: String
    let points: [Double]
    let maxValue: Double?
  }
  struct TopApp: Decodable {
    let name: String
    let bundlePath: String?
    let memory: String
    let fraction: Double
  }

  let date: Date
  let score: Int
  let label: String
  let fixes: [Fix]
  let tiles: [Tile]
  let apps: [TopApp]

  /// Below the user's own home folder: the sandbox has another one.
  static var url: URL {
    let entry = getpwuid(getuid())
    let home = entry.map { String(cString: $0.pointee.pw_dir) } ?? NSHomeDirectory()
    return URL(fileURLWithPath: home)
      .appendingPathComponent("Library/Application Support/Korvell/Widget/widget.json")
  }

  static func read() -> WidgetDocument? {
    guard let data = try? Data(contentsOf: url),
      let document = try? JSONDecoder().decode(WidgetDocument.self, from: data),
      (0...100).contains(document.score)
    else { return nil }
    return document
  }
}
