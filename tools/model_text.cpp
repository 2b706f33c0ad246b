/*
 * model_text.cpp -- reading a model file's text and the small rewrites
 * that let the COIN-OR readers take it.
 */
#include "model_text.h"

#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <cctype>
#include <algorithm>
#include <cstring>
#include <memory>
#include <set>

#include "CoinError.hpp"
#include "CoinFileIO.hpp"

namespace {

// `s` in capitals.
std::string upper(std::string s) {
  for (char &ch : s) ch = static_cast<char>(toupper(static_cast<unsigned char>(ch)));
  return s;
}

// The text with every comment ('\' to the end of the line) blanked, so
// that positions stay those of the text.
std::string without_lp_comments(const std::string &text) {
  std::string s = text;
  bool comment = false;
  for (char &ch : s) {
    if (ch == '\n') comment = false;
    else if (ch == '\\') comment = true;
    if (comment) ch = ' ';
  }
  return s;
}

// Where the objective section ends: the first "subject to", "such that",
// "st" or "s.t." standing as words; npos when none.
size_t objective_end(const std::string &clean) {
  std::string u = upper(clean);
  const char *keys[] = {"SUBJECT TO", "SUCH THAT", "S.T.", "ST"};
  size_t best = std::string::npos;
  for (const char *key : keys) {
    size_t n = strlen(key);
    for (size_t p = u.find(key); p != std::string::npos; p = u.find(key, p + 1)) {
      bool start = p == 0 || isspace(static_cast<unsigned char>(u[p - 1]));
      bool end = p + n >= u.size() || isspace(static_cast<unsigned char>(u[p + n]));
      if (start && end) {
        if (p < best) best = p;
        break;
      }
    }
  }
  return best;
}

// Parse "[ 4 x^2 + 4 x * y - 2 y ^ 2 ]" contents into terms (coefficients
// as written, times `factor`).
bool parse_quadratic(const std::string &body, double factor, std::vector<quadratic_term> *terms,
                     std::string *error) {
  size_t p = 0;
  auto skip = [&]() {
    while (p < body.size() && isspace(static_cast<unsigned char>(body[p]))) ++p;
  };
  // Names may hold '+' and '-' after their first character (the library's
  // writer makes such names): terms are separated by white space.
  auto name = [&]() {
    size_t s = p;
    while (p < body.size() && !isspace(static_cast<unsigned char>(body[p])) && body[p] != '^' &&
           body[p] != '*' && !(p == s && (body[p] == '+' || body[p] == '-')))
      ++p;
    return body.substr(s, p - s);
  };
  skip();
  while (p < body.size()) {
    double sign = 1.0;
    while (p < body.size() && (body[p] == '+' || body[p] == '-')) {
      if (body[p] == '-') sign = -sign;
      ++p;
      skip();
    }
    double coef = 1.0;
    const char *start = body.c_str() + p;
    char *end = nullptr;
    double v = strtod(start, &end);
    if (end != start && (isdigit(static_cast<unsigned char>(*start)) || *start == '.')) {
      coef = v;
      p += static_cast<size_t>(end - start);
      skip();
    }
    std::string a = name();
    if (a.empty()) {
      *error = "quadratic objective: a variable name is missing";
      return false;
    }
    skip();
    std::string b;
    if (p < body.size() && body[p] == '^') {
      ++p;
      skip();
      if (p >= body.size() || body[p] != '2') {
        *error = "quadratic objective: only squares (^2) can be taken";
        return false;
      }
      ++p;
      b = a;
    } else if (p < body.size() && body[p] == '*') {
      ++p;
      skip();
      b = name();
      if (b.empty()) {
        *error = "quadratic objective: a variable name is missing after '*'";
        return false;
      }
    } else {
      *error = "quadratic objective: a term without '^2' or '*': " + a;
      return false;
    }
    terms->push_back({a, b, sign * coef * factor});
    skip();
  }
  return true;
}

// The lines of `text`, without their newlines.
std::vector<std::string> split_lines(const std::string &text) {
  std::vector<std::string> lines;
  size_t p = 0;
  while (p < text.size()) {
    size_t e = text.find('\n', p);
    if (e == std::string::npos) e = text.size();
    lines.push_back(text.substr(p, e - p));
    p = e + 1;
  }
  return lines;
}

// An MPS section header starts in the first column; '*' starts a comment.
bool is_section_line(const std::string &line) {
  return !line.empty() && !isspace(static_cast<unsigned char>(line[0])) && line[0] != '*';
}

// The first word of a line, in capitals.
std::string first_word(const std::string &line) {
  size_t e = line.find_first_of(" \t\r");
  return upper(line.substr(0, e));
}

}  // namespace

bool read_model_text(const char *file, std::string *text) {
  std::unique_ptr<CoinFileInput> in;
  try {
    in.reset(CoinFileInput::create(file));
  } catch (CoinError &) {
    return false;
  }
  char buf[65536];
  text->clear();
  int n;
  while ((n = in->read(buf, sizeof buf)) > 0) text->append(buf, static_cast<size_t>(n));
  return n == 0;
}

bool lp_starts_with_sense(const std::string &text) {
  std::string clean = without_lp_comments(text);
  size_t a = clean.find_first_not_of(" \t\r\n");
  if (a == std::string::npos) return false;
  size_t b = clean.find_first_of(" \t\r\n", a);
  std::string word = upper(clean.substr(a, b == std::string::npos ? std::string::npos : b - a));
  for (const char *sense : {"MIN", "MINIMIZE", "MINIMISE", "MINIMUM", "MAX", "MAXIMIZE",
                            "MAXIMISE", "MAXIMUM"})
    if (word == sense) return true;
  return false;
}

bool take_lp_quadratic(std::string *text, std::vector<quadratic_term> *terms, std::string *error) {
  std::string clean = without_lp_comments(*text);
  size_t open = clean.find('[');
  if (open == std::string::npos) return true;
  size_t end = objective_end(clean);
  if (end != std::string::npos && open > end) {
    *error = "quadratic rows in LP files cannot be read";
    return false;
  }
  size_t close = clean.find(']', open);
  if (close == std::string::npos) {
    *error = "quadratic objective: '[' without ']'";
    return false;
  }
  if (clean.find('[', close) != std::string::npos) {
    *error = end != std::string::npos && clean.find('[', close) > end
                 ? "quadratic rows in LP files cannot be read"
                 : "quadratic objective: more than one '[ ]' part";
    return false;
  }
  // The sign in front of '[' and a "/ 2" after ']'.
  size_t from = open;
  double sign = 1.0;
  size_t q = open;
  while (q > 0 && isspace(static_cast<unsigned char>(clean[q - 1]))) --q;
  if (q > 0 && (clean[q - 1] == '+' || clean[q - 1] == '-')) {
    sign = clean[q - 1] == '-' ? -1.0 : 1.0;
    from = q - 1;
  }
  size_t to = close + 1;
  double factor = sign;
  size_t r = to;
  while (r < clean.size() && isspace(static_cast<unsigned char>(clean[r]))) ++r;
  if (r < clean.size() && clean[r] == '/') {
    ++r;
    while (r < clean.size() && isspace(static_cast<unsigned char>(clean[r]))) ++r;
    char *num_end = nullptr;
    double d = strtod(clean.c_str() + r, &num_end);
    if (num_end == clean.c_str() + r || d == 0.0) {
      *error = "quadratic objective: bad divisor after ']'";
      return false;
    }
    factor = sign / d;
    to = static_cast<size_t>(num_end - clean.c_str());
  }
  std::vector<quadratic_term> found;
  if (!parse_quadratic(clean.substr(open + 1, close - open - 1), factor, &found, error))
    return false;
  // Zero linear terms make the columns of variables that stand nowhere
  // else (one that stands elsewhere must not be given twice).
  std::set<std::string> elsewhere;
  std::string outside = clean.substr(0, open) + " " + clean.substr(close + 1);
  for (size_t a = 0; a < outside.size();) {
    while (a < outside.size() && isspace(static_cast<unsigned char>(outside[a]))) ++a;
    size_t b = a;
    while (b < outside.size() && !isspace(static_cast<unsigned char>(outside[b]))) ++b;
    if (b > a) elsewhere.insert(outside.substr(a, b - a));
    a = b;
  }
  std::set<std::string> names;
  std::string zeros = " ";
  for (const quadratic_term &t : found)
    for (const std::string *n : {&t.first, &t.second})
      if (elsewhere.count(*n) == 0 && names.insert(*n).second) zeros += "+ 0 " + *n + " ";
  // Keep the line structure: every newline of the part stays.
  std::string replaced = zeros;
  for (size_t k = from; k < to; ++k)
    if ((*text)[k] == '\n') replaced += '\n';
  text->replace(from, to - from, replaced);
  terms->insert(terms->end(), found.begin(), found.end());
  return true;
}

namespace {

// The line without white space at either end.
std::string trimmed(const std::string &line) {
  size_t a = line.find_first_not_of(" \t\r");
  if (a == std::string::npos) return "";
  size_t b = line.find_last_not_of(" \t\r");
  return line.substr(a, b - a + 1);
}

// Turn the written set rows into "name: S1:: x:1 y:2" lines of an SOS
// section; words of the rows one after another.
std::string sos_section(const std::vector<std::string> &words) {
  std::string out, current;
  double sign = 1.0, weight = 1.0;
  bool have_weight = false, after_equals = false;
  for (const std::string &w : words) {
    if (after_equals) {
      out += " " + current.substr(0, current.find(' ')) + " " + w + "::" +
             current.substr(current.find(' ')) + "\n";
      current.clear();
      after_equals = false;
    } else if (current.empty()) {
      current = w + " ";   // the name with its ':'
      sign = 1.0;
      have_weight = false;
    } else if (w == "=") {
      after_equals = true;
    } else if (w == "+" || w == "-") {
      sign = w == "-" ? -1.0 : 1.0;
    } else {
      char *end = nullptr;
      double v = strtod(w.c_str(), &end);
      if (*end == '\0' && end != w.c_str()) {
        weight = v;
        have_weight = true;
        continue;
      }
      char buf[64];
      snprintf(buf, sizeof buf, "%.17g", sign * (have_weight ? weight : 1.0));
      current += " " + w + ":" + buf;
      sign = 1.0;
      have_weight = false;
    }
  }
  return out.empty() ? out : "SOS\n" + out;
}

}  // namespace

bool library_lp_sections(std::string *text) {
  std::vector<std::string> lines = split_lines(*text);
  // First the parts to rewrite: which lines they hold and what they say.
  std::vector<std::string> set_words, semis, generals, bounds;
  std::vector<char> drop(lines.size(), 0);
  enum { other, sets, semi, semi_int } where = other;
  for (size_t k = 0; k < lines.size(); ++k) {
    std::string t = trimmed(lines[k]), u = upper(t);
    if (t == "\\Special Ordered Sets" || u == "SEMI CONTINUOUS" || u == "SEMI INTEGERS") {
      where = t[0] == '\\' ? sets : u == "SEMI CONTINUOUS" ? semi : semi_int;
      drop[k] = 1;
      continue;
    }
    // Set rows end at the bounds (or any later section); limit lists at
    // the first line that is not "name > limit".
    if (where == sets && (u == "BOUNDS" || u == "END")) where = other;
    if (where != sets && t.find('>') == std::string::npos) where = other;
    if (where == other) continue;
    drop[k] = 1;
    char word[256], limit[256];
    if (where == sets) {
      for (const char *p = t.c_str(); sscanf(p, "%255s", word) == 1;) {
        set_words.push_back(word);
        p = strstr(p, word) + strlen(word);
      }
    } else if (sscanf(t.c_str(), "%255s > %255s", word, limit) == 2) {
      semis.push_back(word);
      if (where == semi_int) generals.push_back(word);
      bounds.push_back(std::string(word) + " >= " + limit);
    }
  }
  if (set_words.empty() && semis.empty()) return false;
  // Then the text again: the limits as lower bounds, the lists and the
  // sets in the reader's sections before the end.
  std::string out;
  for (size_t k = 0; k < lines.size(); ++k) {
    if (drop[k] != 0) continue;
    std::string u = upper(trimmed(lines[k]));
    if (u == "END") {
      if (!generals.empty()) out += "Generals\n";
      for (const std::string &n : generals) out += " " + n + "\n";
      if (!semis.empty()) out += "Semis\n";
      for (const std::string &n : semis) out += " " + n + "\n";
      out += sos_section(set_words);
    }
    out += lines[k] + "\n";
    if (u == "BOUNDS")
      for (const std::string &b : bounds) out += " " + b + "\n";
  }
  *text = out;
  return true;
}

bool take_mps_objsense(std::string *text, bool *maximise) {
  *maximise = false;
  std::string kept;
  bool in_objsense = false, changed = false;
  for (const std::string &line : split_lines(*text)) {
    if (is_section_line(line)) {
      in_objsense = first_word(line) == "OBJSENSE";
      if (in_objsense) {
        changed = true;
        // "OBJSENSE MAX" on one line, as free MPS writes it.
        if (upper(line).find("MAX", 8) != std::string::npos) *maximise = true;
        continue;
      }
    } else if (in_objsense) {
      if (upper(line).find("MAX") != std::string::npos) *maximise = true;
      continue;
    }
    kept += line + "\n";
  }
  if (changed) *text = kept;
  return changed;
}

bool move_mps_sections_last(std::string *text) {
  std::string kept, sets, quadratic;
  std::string *into = &kept;
  bool changed = false, seen_moved = false;
  for (const std::string &line : split_lines(*text)) {
    if (is_section_line(line)) {
      std::string w = first_word(line);
      if (w == "ENDATA") {
        kept += sets + quadratic;
        sets.clear();
        quadratic.clear();
        into = &kept;
      } else if (w == "SOS") {
        into = &sets;
        seen_moved = true;
      } else if (w == "QUADOBJ" || w == "QMATRIX" || w == "QSECTION") {
        into = &quadratic;
        seen_moved = true;
      } else {
        into = &kept;
        if (seen_moved) changed = true;
      }
    }
    *into += line + "\n";
  }
  kept += sets + quadratic;
  if (changed) *text = kept;
  return changed;
}

bool sets_to_sos_section(std::string *text) {
  std::string out;
  bool in_sets = false, changed = false;
  for (const std::string &line : split_lines(*text)) {
    if (is_section_line(line)) {
      in_sets = first_word(line) == "SETS";
      if (in_sets) {
        out += "SOS\n";
        changed = true;
        continue;
      }
    } else if (in_sets) {
      char a[256], b[256], c[256];
      int n = sscanf(line.c_str(), "%255s %255s %255s", a, b, c);
      std::string type = upper(a);
      if (n == 2 && (type == "S1" || type == "S2")) {
        // A set: type, a placeholder, its name and a priority.
        out += " " + type + " SOS       " + b + " 1\n";
        continue;
      }
      if (n == 3) {
        // A member: its column and weight (the set is the one above).
        std::string column = b;
        column.resize(std::max<size_t>(column.size(), 10), ' ');
        out += "    " + column + c + "\n";
        continue;
      }
    }
    out += line + "\n";
  }
  if (changed) *text = out;
  return changed;
}

bool has_qmatrix_section(const std::string &text) {
  for (const std::string &line : split_lines(text))
    if (is_section_line(line) && first_word(line) == "QMATRIX") return true;
  return false;
}

bool mark_mps_free(std::string *text) {
  size_t p = 0;
  while (p < text->size()) {
    size_t e = text->find('\n', p);
    if (e == std::string::npos) e = text->size();
    std::string line = text->substr(p, e - p);
    if (is_section_line(line)) {
      if (first_word(line) != "NAME") return false;
      std::string u = upper(line);
      while (!u.empty() && isspace(static_cast<unsigned char>(u.back()))) u.pop_back();
      if (u.size() >= 4 && u.compare(u.size() - 4, 4, "FREE") == 0) return false;
      // A NAME line without a name gets one: FREE must be its third field.
      bool has_name = line.find_first_not_of(" \t\r", 4) != std::string::npos;
      size_t line_end = p + line.size();
      while (line_end > p && isspace(static_cast<unsigned char>((*text)[line_end - 1]))) --line_end;
      text->insert(line_end, has_name ? " FREE" : " model FREE");
      return true;
    }
    p = e + 1;
  }
  return false;
}

temp_model_file::temp_model_file(const std::string &text) {
  const char *dir = getenv("TMPDIR");
  std::string pattern = std::string(dir != nullptr && *dir != '\0' ? dir : "/tmp") +
                        "/kvtl_model_XXXXXX";
  std::vector<char> name(pattern.begin(), pattern.end());
  name.push_back('\0');
  int fd = mkstemp(name.data());
  if (fd < 0) return;
  size_t done = 0;
  while (done < text.size()) {
    ssize_t n = write(fd, text.data() + done, text.size() - done);
    if (n <= 0) break;
    done += static_cast<size_t>(n);
  }
  bool ok = done == text.size();
  if (close(fd) != 0) ok = false;
  if (ok) path_ = name.data();
  else unlink(name.data());
}

temp_model_file::~temp_model_file() {
  if (!path_.empty()) unlink(path_.c_str());
}
