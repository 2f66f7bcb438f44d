// make-gallery OUT: turns the captions the demos left in OUT/gallery.tsv into
// OUT/index.html, pictures grouped by subsystem in the order they were made.
// make-gallery --check OUT: every picture the page names exists and decodes,
// and every picture in OUT is on the page.
#include <dirent.h>
#include <png.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct Entry {
  std::string picture, entryPoint, text;
};

std::string escape(const std::string& s) {
  std::string out;
  for (char c : s) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += "&quot;";
        break;
      default:
        out += c;
    }
  }
  return out;
}

bool isPicture(const std::string& name) {
  for (const char* ext : {".png", ".jpg"})
    if (name.size() > 4 && name.compare(name.size() - 4, 4, ext) == 0) return true;
  return false;
}

int writePage(const std::string& dir) {
  std::ifstream tsv(dir + "/gallery.tsv");
  if (!tsv) {
    fprintf(stderr, "make-gallery: no captions in %s/gallery.tsv\n", dir.c_str());
    return 1;
  }
  std::vector<std::string> order;
  std::map<std::string, std::vector<Entry>> groups;
  std::string line;
  while (std::getline(tsv, line)) {
    std::istringstream fields(line);
    std::string subsystem;
    Entry e;
    if (!std::getline(fields, subsystem, '\t') || !std::getline(fields, e.picture, '\t') ||
        !std::getline(fields, e.entryPoint, '\t') || !std::getline(fields, e.text))
      continue;
    if (!groups.count(subsystem)) order.push_back(subsystem);
    groups[subsystem].push_back(e);
  }
  const std::string path = dir + "/index.html";
  std::ofstream html(path);
  html << "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">\n"
          "<title>libcam.common.orvan demo</title>\n<style>\n"
          "body{font-family:sans-serif;margin:2em;background:#f4f4f4;color:#222}\n"
          "section{display:flex;flex-wrap:wrap;gap:1.5em}\n"
          "figure{margin:0;width:420px;background:#fff;padding:.6em;box-shadow:0 1px 3px #0003}\n"
          "img{max-width:100%}figcaption{font-size:.9em}code{color:#05a}\n"
          "</style></head><body>\n<h1>What the library did to the sample data</h1>\n"
          "<p>Written by <code>make demo</code>; click a picture for its full size.</p>\n";
  for (const std::string& subsystem : order) {
    html << "<h2>" << escape(subsystem) << "</h2>\n<section>\n";
    for (const Entry& e : groups[subsystem]) {
      const std::string name = escape(e.picture);
      html << "<figure><a href=\"" << name << "\"><img src=\"" << name << "\" alt=\"" << name
           << "\"></a>\n<figcaption><b>" << name << "</b>: " << escape(e.text) << "<br><code>"
           << escape(e.entryPoint) << "</code></figcaption></figure>\n";
    }
    html << "</section>\n";
  }
  html << "</body></html>\n";
  if (!html.flush()) return 1;
  printf("Gallery: %s\n", path.c_str());
  return 0;
}

bool decodes(const std::string& path) {
  if (path.size() > 4 && path.compare(path.size() - 4, 4, ".jpg") == 0) {
    FILE* f = fopen(path.c_str(), "rb");
    unsigned char magic[3] = {0, 0, 0};
    const bool ok = f != nullptr && fread(magic, 1, 3, f) == 3 && magic[0] == 0xFF && magic[1] == 0xD8;
    if (f != nullptr) fclose(f);
    return ok;
  }
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_file(&image, path.c_str())) return false;
  image.format = PNG_FORMAT_RGBA;
  std::vector<png_byte> pixels(PNG_IMAGE_SIZE(image));
  const bool ok = png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr) != 0;
  png_image_free(&image);
  return ok;
}

int checkPage(const std::string& dir) {
  std::ifstream html(dir + "/index.html");
  std::stringstream page;
  page << html.rdbuf();
  const std::string text = page.str();
  std::set<std::string> named;
  for (size_t at = text.find("src=\""); at != std::string::npos; at = text.find("src=\"", at + 1)) {
    const size_t end = text.find('"', at + 5);
    named.insert(text.substr(at + 5, end - at - 5));
  }
  int faults = named.empty() ? 1 : 0;
  for (const std::string& name : named) {
    if (!decodes(dir + "/" + name)) {
      fprintf(stderr, "named on the page but missing or unreadable: %s\n", name.c_str());
      ++faults;
    }
  }
  if (DIR* d = opendir(dir.c_str())) {
    while (dirent* e = readdir(d)) {
      if (isPicture(e->d_name) && !named.count(e->d_name)) {
        fprintf(stderr, "not on the page: %s\n", e->d_name);
        ++faults;
      }
    }
    closedir(d);
  }
  printf("%zu pictures on the page, %d faults\n", named.size(), faults);
  return faults == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 3 && std::string(argv[1]) == "--check") return checkPage(argv[2]);
  if (argc == 2) return writePage(argv[1]);
  fprintf(stderr, "usage: make-gallery [--check] OUT\n");
  return 2;
}
