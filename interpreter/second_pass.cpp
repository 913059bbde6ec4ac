#include "interpreter/second_pass.h"

#include "base/limits.h"

namespace vl {

namespace {
constexpr int kMaxArguments = 15;
constexpr int kMaxSubscripts = 10;

bool IsClass(uint16_t kind) { return kind >= TK_CLASS_FIRST && kind <= TK_CLASS_LAST; }
}  // namespace

class CSecondPass::Nested {
 public:
  explicit Nested(CSecondPass& pass) : pass_(pass) {
    if (++pass_.nesting_ > limits::kMaxNesting) pass_.Fail(ERR_MEMORY, "nested too deeply");
  }
  ~Nested() { --pass_.nesting_; }

 private:
  CSecondPass& pass_;
};

void CSecondPass::Fail(uint32_t code, const char* detail) { infos_.Raise(code, kNoArgument, detail); }

void CSecondPass::Run() {
  infos_.tokens.clear();
  infos_.tokens.reserve(infos_.pass1Buffer.size());
  infos_.blocks.clear();
  infos_.blocks.emplace_back();  // block number 0 is none
  infos_.newSeen = false;
  infos_.readCursor = infos_.pass1Buffer.data();
  while (Kind() != TK_END) Statement();
  Copy();
  infos_.pass1Buffer.clear();
  infos_.pass1Buffer.shrink_to_fit();
}

uint16_t CSecondPass::NextKind() const {
  return Kind() == TK_END ? static_cast<uint16_t>(TK_END) : TokenKindOf(TokenNext(infos_.readCursor));
}

uint32_t CSecondPass::Copy() {
  const uint32_t offset = Offset();
  if (offset > limits::kMaxStreamBytes) Fail(ERR_MEMORY);
  const Token t = infos_.readCursor;
  infos_.tokens.insert(infos_.tokens.end(), t, t + TokenSize(t));
  if (TokenKindOf(t) != TK_END) Step();
  return offset;
}

uint32_t CSecondPass::Position() const {
  uint32_t position = 0;
  TokenPosition(infos_.readCursor, position);
  return position;
}

uint32_t CSecondPass::CopyWithBlock(uint32_t block) {
  const uint32_t offset = Copy();
  SetWord(offset, 1, block);
  return offset;
}

void CSecondPass::WriteJump(uint16_t kind, uint32_t position) {
  const size_t at = infos_.tokens.size();
  infos_.tokens.resize(at + kShapeJump + 4, 0);
  uint8_t* p = infos_.tokens.data() + at;
  WriteRaw<uint16_t>(p, kind);
  p[2] = kShapeJump + 4;
  p[3] = kTokenHasPosition;
  WriteRaw<uint32_t>(p + kShapeJump, position);
}

void CSecondPass::WriteSemicolon(uint32_t position) {
  const size_t at = infos_.tokens.size();
  infos_.tokens.resize(at + kShapePlain + 4, 0);
  uint8_t* p = infos_.tokens.data() + at;
  WriteRaw<uint16_t>(p, TK_SEMICOLON);
  p[2] = kShapePlain + 4;
  p[3] = kTokenHasPosition;
  WriteRaw<uint32_t>(p + kShapePlain, position);
}

void CSecondPass::SetWord(uint32_t recordOffset, uint32_t word, uint32_t value) {
  WriteRaw<uint32_t>(infos_.tokens.data() + recordOffset + 4 + 4 * word, value);
}

void CSecondPass::Expect(uint16_t kind, uint32_t error) {
  if (Kind() != kind) Fail(error);
  Step();
}

void CSecondPass::CopySemicolon() {
  if (Kind() != TK_SEMICOLON) Fail(ERR_SEMICOLON, "; expected");
  Copy();
}

uint32_t CSecondPass::NewBlock(uint32_t kind) {
  infos_.blocks.push_back({kind, 0, 0, 0, 0, 0});
  return static_cast<uint32_t>(infos_.blocks.size() - 1);
}

void CSecondPass::Statement() {
  const Nested nested(*this);
  const uint16_t kind = Kind();
  if (IsClass(kind)) {
    if (NextKind() != TK_MEMBER_CALL && NextKind() != TK_MEMBER) Fail(ERR_SYNTAX);
    Expression(0);
    CopySemicolon();
    return;
  }
  switch (kind) {
    case TK_CALL:
    case TK_NAME:
    case TK_ELEMENT:
    case TK_THIS:
    case TK_CURWINDOW:
    case TK_TEXT:
      Expression(0);
      CopySemicolon();
      return;
    case TK_VAR:
    case TK_DELETE:
      Copy();
      Expression(0);
      CopySemicolon();
      return;
    case TK_RETURN:
      Copy();
      if (Kind() != TK_SEMICOLON) Expression(0);
      CopySemicolon();
      return;
    case TK_BREAK:
    case TK_CONTINUE:
    case TK_MAIN_START:
    case TK_MAIN_END:
      Copy();
      CopySemicolon();
      return;
    case TK_SEMICOLON:
      Step();
      return;
    case TK_BRACE_OPEN:
      BraceBody(NewBlock(kBlockPlain));
      return;
    case TK_IF:
    case TK_ELSE:
      IfStatement();
      return;
    case TK_WHILE:
      WhileStatement();
      return;
    case TK_FOR:
      ForStatement();
      return;
    case TK_SWITCH:
      SwitchStatement();
      return;
    case TK_FUNCTION:
      FunctionStatement();
      return;
    default:
      Fail(ERR_SYNTAX);
  }
}

void CSecondPass::IfStatement() {
  do {
    const bool isIf = Kind() == TK_IF;
    const uint32_t token = Copy();
    if (isIf) {
      Expect(TK_PAREN_OPEN);
      Expression(1);
    }
    if (Kind() == TK_END) Fail(ERR_SYNTAX);
    Statement();
    SetWord(token, 0, Offset());
  } while (Kind() == TK_ELSE);
}

void CSecondPass::BraceBody(uint32_t block) {
  const uint32_t open = CopyWithBlock(block);
  infos_.blocks[block].bodyStart = open;
  while (Kind() != TK_BRACE_CLOSE) {
    if (Kind() == TK_END) Fail(ERR_BLOCK_END, "} expected before the end of the text");
    Statement();
  }
  const uint32_t close = CopyWithBlock(block);
  infos_.blocks[block].bodyEnd = close;
  SetWord(open, 0, close);
  SetWord(close, 0, open);
}

void CSecondPass::LoopBody(uint32_t token, uint32_t block) {
  if (Kind() == TK_BRACE_OPEN) {
    BraceBody(block);
  } else {
    const uint32_t open = Offset();
    WriteJump(TK_BRACE_OPEN, Position());
    SetWord(open, 1, block);
    if (Kind() == TK_END) Fail(ERR_SYNTAX);
    Statement();
    const uint32_t close = Offset();
    uint32_t position = Position();
    WriteJump(TK_BRACE_CLOSE, position);
    SetWord(close, 1, block);
    SetWord(open, 0, close);
    SetWord(close, 0, open);
    infos_.blocks[block].bodyStart = open;
    infos_.blocks[block].bodyEnd = close;
  }
  SetWord(token, 0, Offset());
}

void CSecondPass::WhileStatement() {
  const uint32_t block = NewBlock(kBlockWhile);
  const uint32_t token = CopyWithBlock(block);
  Expect(TK_PAREN_OPEN);
  infos_.blocks[block].test = Offset();
  Expression(1);
  LoopBody(token, block);
}

void CSecondPass::ForStatement() {
  const uint32_t block = NewBlock(kBlockFor);
  const uint32_t token = CopyWithBlock(block);
  Expect(TK_PAREN_OPEN);
  if (Kind() != TK_SEMICOLON) Expression(0);
  CopySemicolon();
  if (Kind() != TK_SEMICOLON) {
    infos_.blocks[block].test = Offset();
    Expression(0);
  }
  CopySemicolon();
  if (Kind() == TK_PAREN_CLOSE) {
    Step();
  } else {
    infos_.blocks[block].extra = Offset();
    Expression(1);
  }
  LoopBody(token, block);
}

void CSecondPass::SwitchStatement() {
  const uint32_t block = NewBlock(kBlockSwitch);
  const uint32_t token = CopyWithBlock(block);
  Expect(TK_PAREN_OPEN);
  Expression(1);
  if (Kind() != TK_BRACE_OPEN) Fail(ERR_SYNTAX, "{ expected behind Switch");
  const uint32_t open = CopyWithBlock(block);
  infos_.blocks[block].bodyStart = open;
  uint32_t label = token;
  const auto isLabelOrEnd = [&] { return Kind() == TK_CASE || Kind() == TK_DEFAULT || Kind() == TK_BRACE_CLOSE; };
  if (!isLabelOrEnd()) Fail(ERR_SYNTAX, "Case or Default expected");
  while (Kind() != TK_BRACE_CLOSE) {
    const bool isCase = Kind() == TK_CASE;
    SetWord(label, 0, Offset());
    label = Copy();
    if (isCase) {
      Expression(0);
      const uint32_t position = Position();
      Expect(TK_COLON);
      WriteSemicolon(position);
    } else {
      Expect(TK_COLON);
      infos_.blocks[block].extra = Offset();
    }
    while (!isLabelOrEnd()) {
      if (Kind() == TK_END) Fail(ERR_SYNTAX, "} expected before the end of the text");
      if (Kind() == TK_BREAK) {
        Copy();
        Expect(TK_SEMICOLON);
        if (!isLabelOrEnd()) Fail(ERR_SYNTAX, "Case, Default or } expected behind Break");
        break;
      }
      Statement();
    }
  }
  const uint32_t close = CopyWithBlock(block);
  infos_.blocks[block].bodyEnd = close;
  SetWord(open, 0, close);
  SetWord(close, 0, open);
}

void CSecondPass::FunctionStatement() {
  const uint32_t block = NewBlock(kBlockFunction);
  const Token t = infos_.readCursor;
  infos_.blocks[block].sourcePart = TokenSourcePart(t);
  infos_.blocks[block].test = TokenFunctionName(t);
  const uint32_t token = Offset();
  infos_.blocks[block].extra = token;
  WriteJump(TK_FUNCTION, Position());
  SetWord(token, 1, block);
  Step();
  if (Kind() == TK_PAREN_OPEN) {
    if (NextKind() == TK_PAREN_CLOSE) {
      Step();
      Step();
    } else {
      Copy();
      for (int count = 1;; ++count) {
        if (count > kMaxArguments) Fail(ERR_TOO_MANY, "at most 15 parameters");
        Expression(0);
        if (Kind() != TK_COMMA) break;
        Copy();
      }
      if (Kind() != TK_PAREN_CLOSE) Fail(ERR_SYNTAX);
      Copy();
    }
  }
  if (Kind() != TK_BRACE_OPEN) Fail(ERR_BRACE_EXPECTED, "{ expected behind the head of the function");
  BraceBody(block);
}

void CSecondPass::Expression(int depth) {
  const Nested nested(*this);
  Primary();
  for (;;) {
    const uint16_t kind = Kind();
    switch (kind) {
      case TK_COMMA:
      case TK_SEMICOLON:
      case TK_END:
      case TK_COLON:
      case TK_BRACKET_CLOSE:
        return;
      case TK_PAREN_CLOSE:
        if (depth == 0) return;
        Copy();
        MemberChain();
        return;
      case TK_CONDITIONAL:
        Copy();
        Expression(0);
        if (Kind() != TK_COLON) Fail(ERR_SYNTAX, ": expected");
        Copy();
        Primary();
        break;
      case TK_INCREMENT:
      case TK_DECREMENT:
        Copy();
        break;
      default:
        if (kind < TK_OPERATOR_FIRST || kind > TK_OPERATOR_LAST) Fail(ERR_SYNTAX);
        Copy();
        Primary();
        break;
    }
  }
}

void CSecondPass::Primary() {
  if (Kind() == TK_COMMA) return;
  switch (Kind()) {
    case TK_NOT:
    case TK_COMPLEMENT:
    case TK_ADD:
    case TK_SUB:
      Copy();
      break;
    default:
      break;
  }
  PrimaryToken();
}

void CSecondPass::PrimaryToken() {
  const uint16_t kind = Kind();
  if (IsClass(kind)) {
    Copy();
    if (Kind() == TK_MEMBER) {
      Copy();
      return;
    }
    if (Kind() != TK_MEMBER_CALL) Fail(ERR_SYNTAX);
    Copy();
    Arguments();
    MemberChain();
    return;
  }
  switch (kind) {
    case TK_NAME:
    case TK_THIS:
    case TK_MEMBER:
      Copy();
      MemberChain();
      return;
    case TK_ELEMENT:
    case TK_MEMBER_ELEMENT:
      Copy();
      Subscripts();
      MemberChain();
      return;
    case TK_CALL:
    case TK_MEMBER_CALL:
      Copy();
      Arguments();
      MemberChain();
      return;
    case TK_NEW:
      Copy();
      infos_.newSeen = true;
      if (IsClass(Kind())) {
        Copy();
        Expect(TK_PAREN_OPEN);
        Arguments();
      } else if (Kind() == TK_CALL) {
        Copy();
        Arguments();
      } else {
        Fail(ERR_NEW, "a class or a function must follow New");
      }
      return;
    case TK_CURWINDOW:
    case TK_TEXT:
      Copy();
      if (Kind() == TK_MEMBER_CALL) {
        Copy();
        Arguments();
        MemberChain();
      } else if (Kind() == TK_MEMBER) {
        Copy();
      }
      return;
    case TK_PAREN_OPEN:
      Copy();
      Expression(1);
      return;
    case TK_INCREMENT:
    case TK_DECREMENT:
      Copy();
      return;
    default:
      if (kind >= TK_MAIN_START && kind <= TK_OFF) {
        Copy();
        return;
      }
      Fail(ERR_SYNTAX);
  }
}

// What follows a value with a point. Behind a call it compiles too; the walker refuses it when it gets there.
void CSecondPass::MemberChain() {
  for (;;) {
    switch (Kind()) {
      case TK_MEMBER:
        Copy();
        break;
      case TK_MEMBER_CALL:
        Copy();
        Arguments();
        break;
      case TK_MEMBER_ELEMENT:
        Copy();
        Subscripts();
        break;
      default:
        return;
    }
  }
}

void CSecondPass::Arguments() {
  for (int count = 1;; ++count) {
    if (Kind() == TK_PAREN_CLOSE) {
      Copy();
      return;
    }
    if (count > kMaxArguments) Fail(ERR_TOO_MANY, "at most 15 arguments");
    if (Kind() != TK_COMMA) Expression(0);
    if (Kind() == TK_COMMA) {
      Copy();
    } else if (Kind() != TK_PAREN_CLOSE) {
      Fail(ERR_SYNTAX);
    }
  }
}

void CSecondPass::Subscripts() {
  for (int count = 1;; ++count) {
    if (count > kMaxSubscripts) Fail(ERR_TOO_MANY, "at most 10 subscripts");
    Expression(0);
    if (Kind() == TK_BRACKET_CLOSE) {
      Copy();
      return;
    }
    if (Kind() != TK_COMMA) Fail(ERR_SYNTAX);
    Copy();
  }
}

}  // namespace vl
