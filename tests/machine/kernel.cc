// A kernel for a single program, a static one of Linux, to run tests on processors that only emulators
// of whole machines have.
//
// The program runs in the kernel's own mode. It finds the system calls that tests need: memory with its
// protection, output to the serial port, and threads, each of which runs to its end when it is made.
// There are no files, no signals and no other processes. Memory has zeros and is found when it is first
// touched, as tests reserve far more than they use.
#include <elf.h>
#include <stddef.h>
#include <stdint.h>

namespace {

constexpr uint64_t pageBytes = 4096;

// Addresses above those of memory itself, which keeps its own.
constexpr uint64_t programBase = 64ull << 30;
constexpr uint64_t heapBase = 128ull << 30, heapEnd = 192ull << 30;
constexpr uint64_t mappingBase = 256ull << 30, mostMapped = 1ull << 40;
constexpr uint64_t stackTop = 255ull << 30, stackBytes = 8 << 20;

enum Error : int64_t {
  notThere = 2,      // ENOENT
  badFile = 9,       // EBADF
  notNow = 11,       // EAGAIN
  noMemory = 12,     // ENOMEM
  noDevice = 19,     // ENODEV
  badArgument = 22,  // EINVAL
  noTerminal = 25,   // ENOTTY
  noSystemCall = 38  // ENOSYS
};

void out(uint16_t port, uint8_t value) {
  asm volatile("outb %0, %1" ::"a"(value), "Nd"(port));
}

uint8_t in(uint16_t port) {
  uint8_t value;
  asm volatile("inb %1, %0" : "=a"(value) : "Nd"(port));
  return value;
}

// ---- The console: the first serial port

constexpr uint16_t serial = 0x3F8;

/// 8 bits, as fast as it can be.
void openConsole() {
  out(serial + 3, 0x80);
  out(serial, 1);
  out(serial + 1, 0);
  out(serial + 3, 3);
}

void print(char c) {
  while ((in(serial + 5) & 0x20) == 0) {
  }
  out(serial, static_cast<uint8_t>(c));
}

void print(const char* text) {
  while (*text != 0) print(*text++);
}

void printHex(uint64_t value) {
  for (int shift = 60; shift >= 0; shift -= 4) print("0123456789abcdef"[value >> shift & 15]);
}

/// Ends the emulation after a last line of its own.
[[noreturn]] void halt(uint64_t status) {
  print("\nended with status ");
  printHex(status);
  print("\n");
  for (const char* c = "Shutdown"; *c != 0; ++c) out(0x8900, static_cast<uint8_t>(*c));
  for (;;) asm volatile("cli; hlt");
}

[[noreturn]] void fail(const char* why, uint64_t value = 0) {
  print("\nkernel: ");
  print(why);
  print(" ");
  printHex(value);
  halt(255);
}

}  // namespace

// The compiler calls these two by itself.
extern "C" void* memcpy(void* dst, const void* src, size_t bytes) {
  void* to = dst;
  asm volatile("rep movsb" : "+D"(to), "+S"(src), "+c"(bytes)::"memory");
  return dst;
}

extern "C" void* memset(void* dst, int value, size_t bytes) {
  void* to = dst;
  asm volatile("rep stosb" : "+D"(to), "+c"(bytes) : "a"(value) : "memory");
  return dst;
}

extern "C" uint64_t pageTable[512];
extern "C" [[noreturn]] void enterProgram(uint64_t entry, uint64_t stack);

namespace {

size_t lengthOf(const char* text) {
  size_t length = 0;
  while (text[length] != 0) ++length;
  return length;
}

template <class T>
T* at(uint64_t address) {
  return reinterpret_cast<T*>(address);
}

uint64_t roundUp(uint64_t bytes) {
  return (bytes + pageBytes - 1) / pageBytes * pageBytes;
}

// ---- Memory

// Bits of an entry of a page table. Processors leave bit 9 to the system: here a page may be touched.
constexpr uint64_t present = 1, writable = 2, promised = 1 << 9;

uint64_t unusedMemory, memoryEnd;  ///< what was never used
uint64_t freePages;                ///< a list: each begins with the address of the next
uint64_t heapTop = heapBase, mappingTop = mappingBase;

/// A page of zeros.
uint64_t takePage() {
  uint64_t page = freePages;
  if (page != 0) {
    freePages = *at<uint64_t>(page);
  } else {
    page = unusedMemory;
    unusedMemory += pageBytes;
    if (unusedMemory > memoryEnd) fail("there is no more memory than", memoryEnd);
  }
  memset(at<void>(page), 0, pageBytes);
  return page;
}

uint64_t pageOf(uint64_t entry) {
  return entry / pageBytes * pageBytes;
}

/// The entry of the page of an address; null if its table is missing and not to be made.
uint64_t* entryOf(uint64_t address, bool make) {
  uint64_t* table = pageTable;
  for (int shift = 39; shift > 12; shift -= 9) {
    uint64_t& entry = table[address >> shift & 511];
    if ((entry & present) == 0) {
      if (!make) return nullptr;
      entry = takePage() | present | writable;
    }
    table = at<uint64_t>(pageOf(entry));
  }
  return table + (address >> 12 & 511);
}

/// Calls change(entry) for the entries of pages, of those that have no table only if `make`.
template <class Change>
void forEachPage(uint64_t begin, uint64_t end, bool make, Change change) {
  constexpr uint64_t tableBytes = 512 * pageBytes;
  while (begin < end) {
    uint64_t* const entry = entryOf(begin, make);
    if (entry == nullptr) {
      begin = (begin / tableBytes + 1) * tableBytes;
      continue;
    }
    change(*entry);
    asm volatile("invlpg (%0)" ::"r"(begin) : "memory");
    begin += pageBytes;
  }
}

void freePage(uint64_t& entry) {
  const uint64_t page = pageOf(entry);
  if (page != 0) {
    *at<uint64_t>(page) = freePages;
    freePages = page;
  }
  entry -= page;
  entry &= ~present;
}

void unmap(uint64_t begin, uint64_t end) {
  forEachPage(begin, end, false, [](uint64_t& entry) {
    freePage(entry);
    entry = 0;
  });
}

/// protection: PROT_READ and PROT_WRITE; whatever can be read can be executed, too.
void protect(uint64_t begin, uint64_t end, uint64_t protection) {
  forEachPage(begin, end, protection != 0, [&](uint64_t& entry) {
    const uint64_t page = pageOf(entry);
    entry = page;
    if (protection == 0) return;
    entry |= promised | (protection & 2 ? writable : 0) | (page != 0 ? present : 0);
  });
}

/// Whether the address was promised; its page is there then.
bool keepPromise(uint64_t address) {
  if (address < programBase) return false;
  uint64_t* const entry = entryOf(address, false);
  if (entry == nullptr || (*entry & promised) == 0 || (*entry & present) != 0) return false;
  *entry |= takePage() | present;
  return true;
}

/// New anonymous memory and, behind it, a page that is inaccessible.
uint64_t map(uint64_t bytes, uint64_t protection) {
  const uint64_t begin = mappingTop;
  mappingTop += roundUp(bytes) + pageBytes;
  if (protection != 0) protect(begin, begin + roundUp(bytes), protection);
  return begin;
}

uint64_t setHeapTop(uint64_t top) {
  if (top < heapBase || top > heapEnd) return heapTop;
  unmap(roundUp(top), roundUp(heapTop));
  protect(roundUp(heapTop), roundUp(top), 3);
  heapTop = top;
  return top;
}

// ---- System calls

/// The registers of a call, as boot.S stores them.
struct Call {
  uint64_t number, a, b, c, d;
};

int64_t write(uint64_t file, const char* text, uint64_t bytes) {
  if (file != 1 && file != 2) return -badFile;
  for (uint64_t i = 0; i < bytes; ++i) print(text[i]);
  return static_cast<int64_t>(bytes);
}

int64_t writeAll(uint64_t file, const uint64_t (*pieces)[2], uint64_t count) {
  int64_t total = 0;
  for (uint64_t i = 0; i < count; ++i) total += write(file, at<char>(pieces[i][0]), pieces[i][1]);
  return total;
}

/// Files are terminals.
int64_t describeFile(uint64_t file, uint8_t* description) {
  if (file > 2) return -badFile;
  memset(description, 0, 144);
  const uint32_t mode = 020620;
  memcpy(description + 24, &mode, sizeof(mode));
  return 0;
}

/// Nanoseconds, if the processor has a tick in each.
int64_t tellTime(uint64_t* time, uint64_t unitsASecond) {
  uint32_t low, high;
  asm volatile("rdtsc" : "=a"(low), "=d"(high));
  const uint64_t ticks = uint64_t{high} << 32 | low;
  time[0] = ticks / 1000000000;
  time[1] = ticks % 1000000000 / (1000000000 / unitsASecond);
  return 0;
}

}  // namespace

extern "C" int64_t systemCall(const Call& call) {
  constexpr uint64_t anonymous = 0x20, discard = 4, setStorage = 0x1002;
  const uint64_t end = call.a + roundUp(call.b);
  switch (call.number) {
    case 1:  // write
      return write(call.a, at<char>(call.b), call.c);
    case 3:  // close
      return 0;
    case 5:  // fstat
      return describeFile(call.a, at<uint8_t>(call.b));
    case 9:  // mmap
      if ((call.d & anonymous) == 0) return -noDevice;
      return call.b > mostMapped ? -noMemory : static_cast<int64_t>(map(call.b, call.c));
    case 10:  // mprotect
      protect(call.a, end, call.c);
      return 0;
    case 11:  // munmap
      unmap(call.a, end);
      return 0;
    case 12:  // brk
      return static_cast<int64_t>(setHeapTop(call.a));
    case 13:   // rt_sigaction
    case 14:   // rt_sigprocmask
    case 131:  // sigaltstack
    case 273:  // set_robust_list
      return 0;
    case 16:  // ioctl
      return -noTerminal;
    case 20:  // writev
      return writeAll(call.a, at<const uint64_t[2]>(call.b), call.c);
    case 28:  // madvise
      if (call.c == discard) forEachPage(call.a, end, false, freePage);
      return 0;
    case 39:   // getpid
    case 186:  // gettid
    case 218:  // set_tid_address
      return 1;
    case 79:  // getcwd
      memcpy(at<char>(call.a), "/", 2);
      return 2;
    case 96:  // gettimeofday
      return tellTime(at<uint64_t>(call.a), 1000000);
    case 158:  // arch_prctl
      if (call.a != setStorage) return -badArgument;
      asm volatile("wrfsbase %0" ::"r"(call.b));
      return 0;
    case 202:  // futex: nobody else could wake the thread
      return (call.b & 127) == 0 ? -notNow : 0;
    case 204:  // sched_getaffinity
      memset(at<void>(call.c), 0, 8);
      *at<uint8_t>(call.c) = 1;
      return 8;
    case 228:  // clock_gettime
      return tellTime(at<uint64_t>(call.b), 1000000000);
    case 231:  // exit_group
      halt(call.a);
    case 234:  // tgkill, of abort()
      fail("the program killed itself");
    case 262:  // newfstatat: without a name, of an open file
      return *at<char>(call.b) == 0 ? describeFile(call.a, at<uint8_t>(call.c)) : -notThere;
    case 89:   // readlink
    case 257:  // openat
    case 267:  // readlinkat
      return -notThere;
    case 302:  // prlimit64
      if (call.d != 0) {
        at<uint64_t>(call.d)[0] = stackBytes;
        at<uint64_t>(call.d)[1] = ~0ull;
      }
      return 0;
    case 318:  // getrandom: the same in each run
      for (uint64_t i = 0; i < call.b; ++i) at<uint8_t>(call.a)[i] = static_cast<uint8_t>(37 * i);
      return static_cast<int64_t>(call.b);
    case 334:  // rseq
    case 435:  // clone3: clone is asked for instead
      return -noSystemCall;
    default:
      print("\nkernel: there is no system call ");
      printHex(call.number);
      print("\n");
      return -noSystemCall;
  }
}

/// What the processor and boot.S store.
struct Exception {
  uint64_t number, code, instruction, segment, flags, stack;
};

extern "C" void exception(const Exception& e) {
  constexpr uint64_t invalidInstruction = 6, pageFault = 14;
  uint64_t address;
  asm volatile("mov %%cr2, %0" : "=r"(address));
  if (e.number == pageFault && keepPromise(address)) return;
  print("\nkernel: exception ");
  printHex(e.number);
  print(" at ");
  printHex(e.instruction);
  print(" of the program, which was loaded at ");
  printHex(programBase);
  if (e.number == pageFault) {
    print("\nkernel: the address was ");
    printHex(address);
  }
  if (e.number == invalidInstruction) {
    print("\nkernel: the instruction, its last bytes first: ");
    printHex(at<const uint64_t>(e.instruction)[1]);
    printHex(at<const uint64_t>(e.instruction)[0]);
  }
  halt(255);
}

// ---- The program

namespace {

/// What GRUB tells, and its modules, of which the first is the program.
struct Multiboot {
  uint32_t flags, lowerMemory, upperMemory, device, commandLine, moduleCount, modules;
};
struct Module {
  uint32_t begin, end, words;
};

/// Copies the program to its addresses; returns where its own headers are.
uint64_t load(const uint8_t* file) {
  const auto& header = *reinterpret_cast<const Elf64_Ehdr*>(file);
  if (header.e_type != ET_DYN) fail("the program has addresses of its own");
  const auto* segments = reinterpret_cast<const Elf64_Phdr*>(file + header.e_phoff);
  uint64_t headers = 0;
  for (int i = 0; i < header.e_phnum; ++i) {
    const Elf64_Phdr& segment = segments[i];
    if (segment.p_type == PT_INTERP) fail("the program is not a static one");
    if (segment.p_type != PT_LOAD) continue;
    const uint64_t begin = programBase + segment.p_vaddr;
    protect(pageOf(begin), begin + segment.p_memsz, 3);
    memcpy(at<void>(begin), file + segment.p_offset, segment.p_filesz);
    if (segment.p_offset == 0) headers = begin + header.e_phoff;
  }
  return headers;
}

}  // namespace

extern "C" uint8_t end[];  // of the kernel

/// The words of the module are variables of the environment, the program's name and its arguments.
extern "C" [[noreturn]] void startProgram(const Multiboot& boot) {
  openConsole();
  if (boot.moduleCount == 0) fail("there is no program");
  const Module program = *at<const Module>(boot.modules);
  // GRUB keeps its own words where pages will be taken.
  static char words[4096];
  const size_t length = lengthOf(at<char>(program.words));
  if (length >= sizeof(words)) fail("there are too many words");
  memcpy(words, at<char>(program.words), length);
  memoryEnd = (1ull << 20) + (uint64_t{boot.upperMemory} << 10);
  const auto kernelEnd = reinterpret_cast<uint64_t>(end);
  unusedMemory = roundUp(program.end > kernelEnd ? program.end : kernelEnd);

  const auto* const file = at<const uint8_t>(program.begin);
  const auto& header = *reinterpret_cast<const Elf64_Ehdr*>(file);
  const uint64_t headers = load(file);
  protect(stackTop - stackBytes, stackTop, 3);

  uint64_t arguments[64], environment[16];
  size_t argumentCount = 0, variableCount = 0;
  for (char* word = words; *word != 0;) {
    bool isVariable = false;
    char* wordEnd = word;
    for (; *wordEnd != 0 && *wordEnd != ' '; ++wordEnd) isVariable |= *wordEnd == '=';
    const bool isLast = *wordEnd == 0;
    *wordEnd = 0;
    if (argumentCount == 63 || variableCount == 15) fail("there are too many words");
    if (isVariable && argumentCount == 0) {
      environment[variableCount++] = reinterpret_cast<uint64_t>(word);
    } else {
      arguments[argumentCount++] = reinterpret_cast<uint64_t>(word);
    }
    word = isLast ? wordEnd : wordEnd + 1;
  }
  arguments[argumentCount++] = 0;
  environment[variableCount++] = 0;

  static const uint64_t random[2] = {};
  const uint64_t auxiliary[][2] = {
      {AT_PHDR, headers},
      {AT_PHENT, sizeof(Elf64_Phdr)},
      {AT_PHNUM, header.e_phnum},
      {AT_PAGESZ, pageBytes},
      {AT_ENTRY, programBase + header.e_entry},
      {AT_RANDOM, reinterpret_cast<uint64_t>(random)},
      {AT_NULL, 0},
  };
  constexpr size_t auxiliaryWords = sizeof(auxiliary) / sizeof(uint64_t);
  const size_t stackWords = 1 + argumentCount + variableCount + auxiliaryWords;
  uint64_t* const stack = at<uint64_t>(stackTop) - (stackWords + 1) / 2 * 2;  // aligned to 16 bytes
  stack[0] = argumentCount - 1;
  memcpy(stack + 1, arguments, 8 * argumentCount);
  memcpy(stack + 1 + argumentCount, environment, 8 * variableCount);
  memcpy(stack + 1 + argumentCount + variableCount, auxiliary, sizeof(auxiliary));
  enterProgram(programBase + header.e_entry, reinterpret_cast<uint64_t>(stack));
}
