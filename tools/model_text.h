/*
 * model_text.h -- the text of a model file, for what the COIN-OR readers
 * cannot take as written: quadratic objectives of LP files, quadratic
 * sections of MPS files ahead of the BOUNDS, free MPS without its marker.
 */
#ifndef KVTL_TOOLS_MODEL_TEXT_H
#define KVTL_TOOLS_MODEL_TEXT_H

#include <string>
#include <vector>

// The whole file, gzip-compressed or not; false when it cannot be read.
bool read_model_text(const char *file, std::string *text);

// One term of a quadratic objective: coef * first * second.
struct quadratic_term {
  std::string first, second;
  double coef;
};

// Does the LP text begin (after comments) with the objective sense
// (Minimize, Maximize and their short and British forms)?  The LP reader
// reads past the end of its buffers on a text without one.
bool lp_starts_with_sense(const std::string &text);

// Take the quadratic part "[ ... ]" (optionally followed by "/ 2") out of
// the objective of an LP-format text, into *terms with their coefficients
// as they count in the objective (the halving and the sign in front
// applied).  The part is replaced by zero linear terms of its variables, so
// that a reader still makes their columns.  False with a reason in *error
// when the part cannot be parsed, or quadratic rows are found.
bool take_lp_quadratic(std::string *text, std::vector<quadratic_term> *terms, std::string *error);

// Take the OBJSENSE section (or line) out of an MPS text, which the MPS
// reader does not apply; *maximise tells whether it asked for MAX.  True
// when the text changed.
bool take_mps_objsense(std::string *text, bool *maximise);

// Rewrite what the library's LP writer makes and the LP reader does not
// take: sets written as rows "name: x + 2 y = S1" after the comment
// "\Special Ordered Sets" become an SOS section, and the "Semi Continuous"
// and "Semi Integers" sections ("name > limit" lines) become Semis (with
// Generals) and a lower bound at the limit.  True when the text changed.
bool library_lp_sections(std::string *text);

// Move the SOS section and then the quadratic objective sections (QUADOBJ,
// QMATRIX, QSECTION) of an MPS text to the end, before ENDATA, when other
// sections follow them (the reader stops at them); true when the text
// changed.
bool move_mps_sections_last(std::string *text);

// Rewrite a SETS section (" S1 name" headers, then "name column weight"
// lines, as the library's MPS writer makes them) into the SOS section the
// MPS reader takes; true when the text changed.
bool sets_to_sos_section(std::string *text);

// Does the MPS text give its quadratic objective as QMATRIX (all of Q)?
bool has_qmatrix_section(const std::string &text);

// Mark an MPS text as free format (the NAME line ends in FREE); true when
// the text changed.
bool mark_mps_free(std::string *text);

// A temporary file holding `text` (in TMPDIR, else /tmp); removed when the
// object goes.  path() is empty when it could not be written.
class temp_model_file {
 public:
  explicit temp_model_file(const std::string &text);
  ~temp_model_file();
  temp_model_file(const temp_model_file &) = delete;
  temp_model_file &operator=(const temp_model_file &) = delete;
  const std::string &path() const { return path_; }

 private:
  std::string path_;
};

#endif
