// As much of an operating system as a statically linked test program needs. It loads the
// program into a bare 64-bit machine with AVX-512, provides memory whose pages can be
// protected, and writes to the serial port. For an emulator, in which a real system would start
// slowly; see scripts/emulate-avx512.
#include <stdint.h>

typedef uint64_t Word;

// The machine's memory, 256 MiB: the monitor from 1 MiB on, the program at the address it is linked
// to (4 MiB), its heap after it, then:
enum {
    ARENA = 0x4000000,      // mmap's memory, page by page
    ARENA_END = 0x8000000,  //
    IMAGE = 0x9000000,      // the program's file
    RANDOM = 0xE000000,     // 16 bytes of any value
    STACK = 0xF000000,
    PAGE = 4096,
    LARGE_PAGE = 0x200000,
    PAGE_PRESENT = 3,
    MAX_ARGUMENTS = 16,
};

extern Word g_level2[512];
extern const Word g_exceptionEntries[32];
void SystemCallEntry(void);
void EnterProgram(Word in_entry, Word in_stack);

static Word s_arenaPages[(ARENA_END - ARENA) / PAGE] __attribute__((aligned(4096)));
static Word s_arenaNext = ARENA;
static Word s_heapEnd;

static void WritePort(uint16_t in_port, char in_value) {
    __asm__ volatile("outb %0, %1" : : "a"(in_value), "Nd"(in_port));
}

static uint8_t ReadPort(uint16_t in_port) {
    uint8_t value;
    __asm__ volatile("inb %1, %0" : "=a"(value) : "Nd"(in_port));
    return value;
}

static void WriteBytes(const char* in_bytes, Word in_size) {
    for (Word i = 0; i < in_size; ++i) {
        while ((ReadPort(0x3FD) & 0x20) == 0) {
        }
        WritePort(0x3F8, in_bytes[i]);
    }
}

static void WriteText(const char* in_text) {
    for (; *in_text != 0; ++in_text) WriteBytes(in_text, 1);
}

static void WriteNumber(Word in_number) {
    for (int shift = 60; shift >= 0; shift -= 4) {
        WriteBytes(&"0123456789ABCDEF"[in_number >> shift & 15], 1);
    }
    WriteText(" ");
}

// Ends the emulator, through a port that it knows.
static _Noreturn void SwitchOff(void) {
    for (const char* at = "Shutdown"; *at != 0; ++at) WritePort(0x8900, *at);
    for (;;) __asm__ volatile("cli; hlt");
}

_Noreturn void DoFault(Word in_number, const Word* in_frame) {
    Word address;
    __asm__ volatile("mov %%cr2, %0" : "=r"(address));
    WriteText("\nmonitor: exception, address, frame: ");
    WriteNumber(in_number);
    WriteNumber(address);
    for (int i = 0; i < 5; ++i) WriteNumber(in_frame[i]);
    WriteText("\n");
    SwitchOff();
}

static void Copy(void* out_to, const void* in_from, Word in_size) {
    for (Word i = 0; i < in_size; ++i) ((char*)out_to)[i] = ((const char*)in_from)[i];
}

static void Clear(void* out_at, Word in_size) {
    for (Word i = 0; i < in_size; ++i) ((volatile char*)out_at)[i] = 0;
}

static void Protect(Word in_address, Word in_size, int in_isAllowed) {
    for (Word at = in_address; at < in_address + in_size; at += PAGE) {
        if (at < ARENA || at >= ARENA_END) continue;
        s_arenaPages[(at - ARENA) / PAGE] = in_isAllowed ? at | PAGE_PRESENT : 0;
        __asm__ volatile("invlpg (%0)" : : "r"(at) : "memory");
    }
}

static Word Map(Word in_size, Word in_protection) {
    const Word address = s_arenaNext;
    const Word size = (in_size + PAGE - 1) / PAGE * PAGE;
    if (size > ARENA_END - address) return (Word)-12;
    s_arenaNext += size;
    Protect(address, size, 1);
    Clear((void*)address, size);
    Protect(address, size, in_protection != 0);
    return address;
}

static Word Break(Word in_end) {
    if (in_end >= s_heapEnd && in_end < ARENA) {
        Clear((void*)s_heapEnd, in_end - s_heapEnd);
        s_heapEnd = in_end;
    }
    return s_heapEnd;
}

static void WriteModelRegister(uint32_t in_register, Word in_value) {
    __asm__ volatile("wrmsr"
                     :
                     : "c"(in_register), "a"((uint32_t)in_value), "d"((uint32_t)(in_value >> 32)));
}

static Word FillStatus(char* out_status) {
    enum { SIZE = 144, MODE = 24, CHARACTER_DEVICE = 0020666 };
    Clear(out_status, SIZE);
    *(uint32_t*)(out_status + MODE) = CHARACTER_DEVICE;
    return 0;
}

static _Noreturn void Exit(Word in_code) {
    WriteText("\nmonitor: exit code ");
    WriteNumber(in_code);
    WriteText("\n");
    SwitchOff();
}

// The calls that the C library's start-up, GoogleTest and the test itself make; the numbers are
// those of x86-64 Linux. io_registers: rax, rdi, rsi, rdx, r10, r8, r9.
void DoSystemCall(Word* io_registers) {
    const Word first = io_registers[1];
    const Word second = io_registers[2];
    const Word third = io_registers[3];
    Word result = 0;
    switch (io_registers[0]) {
        case 1:  // write
            WriteBytes((const char*)second, third);
            result = third;
            break;
        case 5:  // fstat
            result = FillStatus((char*)second);
            break;
        case 9:  // mmap
            result = Map(second, third);
            break;
        case 10:  // mprotect
            Protect(first, second, third != 0);
            break;
        case 11:  // munmap
            Protect(first, second, 0);
            break;
        case 12:  // brk
            result = Break(first);
            break;
        case 39:   // getpid
        case 186:  // gettid
        case 218:  // set_tid_address
            result = 1;
            break;
        case 60:   // exit
        case 231:  // exit_group
            Exit(first);
        case 79:  // getcwd
            Copy((void*)first, "/", 2);
            result = 2;
            break;
        case 158:  // arch_prctl, to set the base of fs
            WriteModelRegister(0xC0000100, second);
            break;
        case 228:  // clock_gettime
            Clear((void*)second, 16);
            break;
        case 262:  // newfstatat
            result = FillStatus((char*)third);
            break;
        case 318:  // getrandom
            Copy((void*)first, (const void*)RANDOM, second);
            result = second;
            break;
        case 13:   // rt_sigaction
        case 14:   // rt_sigprocmask
        case 202:  // futex
        case 273:  // set_robust_list
            break;
        case 200:  // tkill
        case 234:  // tgkill
            Exit(128 + third);
        case 16:  // ioctl
            result = (Word)-25;
            break;
        case 21:   // access
        case 89:   // readlink
        case 257:  // openat
            result = (Word)-2;
            break;
        case 302:  // prlimit64
        case 334:  // rseq
            result = (Word)-38;
            break;
        default:
            WriteText("\nmonitor: unknown system call ");
            WriteNumber(io_registers[0]);
            result = (Word)-38;
    }
    io_registers[0] = result;
}

static void SetUpExceptions(void) {
    static struct {
        uint16_t m_low, m_segment, m_type, m_middle;
        uint32_t m_high, m_reserved;
    } s_gates[32];
    for (int i = 0; i < 32; ++i) {
        const Word entry = g_exceptionEntries[i];
        s_gates[i].m_low = (uint16_t)entry;
        s_gates[i].m_segment = 8;
        s_gates[i].m_type = 0x8E00;
        s_gates[i].m_middle = (uint16_t)(entry >> 16);
    }
    struct {
        uint16_t m_limit;
        Word m_address;
    } __attribute__((packed)) pointer = {sizeof s_gates - 1, (Word)s_gates};
    __asm__ volatile("lidt %0" : : "m"(pointer));
}

static void SetUpArena(void) {
    for (Word i = 0; i < (ARENA_END - ARENA) / LARGE_PAGE; ++i) {
        g_level2[ARENA / LARGE_PAGE + i] = (Word)&s_arenaPages[i * 512] | PAGE_PRESENT;
    }
    __asm__ volatile("mov %%cr3, %%rax; mov %%rax, %%cr3" : : : "rax", "memory");
}

struct Segment {
    uint32_t m_type, m_flags;
    Word m_offset, m_address, m_physical, m_fileSize, m_memorySize, m_alignment;
};

struct File {
    char m_identity[16];
    uint16_t m_type, m_machine;
    uint32_t m_version;
    Word m_entry, m_segments, m_sections;
    uint32_t m_flags;
    uint16_t m_size, m_segmentSize, m_segmentCount;
};

// Returns the address of the segment table in memory.
static Word Load(const struct File* in_file) {
    enum { LOADABLE = 1 };
    const struct Segment* segment = (const void*)((const char*)in_file + in_file->m_segments);
    Word table = 0;
    for (int i = 0; i < in_file->m_segmentCount; ++i, ++segment) {
        if (segment->m_type != LOADABLE) continue;
        if (segment->m_offset == 0) table = segment->m_address + in_file->m_segments;
        Clear((void*)segment->m_address, segment->m_memorySize);
        Copy((void*)segment->m_address, (const char*)in_file + segment->m_offset,
             segment->m_fileSize);
        s_heapEnd = (segment->m_address + segment->m_memorySize + 0xFFFFF) & ~(Word)0xFFFFF;
    }
    return table;
}

// in_info: the information of a Multiboot loader. Its only module is the program; the module's text
// is the program's arguments, with a blank between them.
void RunProgram(const uint32_t* in_info) {
    const uint32_t* const module = (const uint32_t*)(Word)in_info[6];
    const struct File* const file = (const struct File*)IMAGE;
    WritePort(0x3FB, 3);  // eight bits a character
    SetUpExceptions();
    Copy((void*)IMAGE, (const void*)(Word)module[0], module[1] - module[0]);
    static char s_text[1024];
    Copy(s_text, (const void*)(Word)module[2], sizeof s_text - 1);
    SetUpArena();
    const Word table = Load(file);
    Word* const stack = (Word*)STACK;
    Word count = 0;
    for (char* at = s_text; *at != 0 && count < MAX_ARGUMENTS;) {
        stack[1 + count++] = (Word)at;
        while (*at != 0 && *at != ' ') ++at;
        while (*at == ' ') *at++ = 0;
    }
    stack[0] = count;
    // No environment; then AT_PAGESZ, AT_PHDR, AT_PHENT, AT_PHNUM, AT_ENTRY, AT_RANDOM and the end.
    const Word behind[] = {0,  0,
                           6,  PAGE,
                           3,  table,
                           4,  sizeof(struct Segment),
                           5,  file->m_segmentCount,
                           9,  file->m_entry,
                           25, RANDOM,
                           0,  0};
    Copy(stack + 1 + count, behind, sizeof behind);
    WriteModelRegister(0xC0000081, (Word)8 << 32);
    WriteModelRegister(0xC0000082, (Word)SystemCallEntry);
    WriteModelRegister(0xC0000084, 0x700);
    EnterProgram(file->m_entry, STACK);
}
