# The monitor's entries: from the loader's 32-bit mode to 64-bit mode with AVX-512 on, from a
# program's system calls and back, and one for each processor exception.

.set PAGE_PRESENT, 0x3                  # and writable
.set PAGE_LARGE, 0x83                   # the same, of 2 MiB
.set CR4_BITS, 0x40620                  # PAE, OSFXSR, OSXMMEXCPT, OSXSAVE
.set CR0_BITS, 0x80010033               # PG, WP, NE, ET, MP, PE
.set MSR_EFER, 0xC0000080
.set EFER_BITS, 0x101                   # LME, SCE
.set XCR0_BITS, 0xE7                    # x87, SSE, AVX and the three states of AVX-512

.section .multiboot, "a"
.align 4
.long 0x1BADB002, 1, -(0x1BADB002 + 1)  # modules start at pages

.section .text.boot, "ax"
.code32
.global _start
_start:
    cli
    mov %ebx, %edi                      # the loader's information
    movl $level3 + PAGE_PRESENT, level4
    movl $level2 + PAGE_PRESENT, level3
    mov $level2, %ecx                   # the first GiB, mapped to itself
    mov $PAGE_LARGE, %eax
    mov $512, %edx
1:  mov %eax, (%ecx)
    add $0x200000, %eax
    add $8, %ecx
    dec %edx
    jnz 1b
    mov $CR4_BITS, %eax
    mov %eax, %cr4
    mov $level4, %eax
    mov %eax, %cr3
    mov $MSR_EFER, %ecx
    rdmsr
    or $EFER_BITS, %eax
    wrmsr
    mov $CR0_BITS, %eax
    mov %eax, %cr0
    lgdt segments_pointer
    ljmp $8, $in_64_bits

.align 16
segments:
    .quad 0, 0x00AF9A000000FFFF, 0x00CF92000000FFFF
segments_pointer:
    .word 23
    .long segments

.code64
in_64_bits:
    mov $16, %eax
    mov %eax, %ds
    mov %eax, %es
    mov %eax, %ss
    xor %ecx, %ecx
    xor %edx, %edx
    mov $XCR0_BITS, %eax
    xsetbv
    mov $stack_end, %rsp
    mov %edi, %edi
    call RunProgram

# void EnterProgram(entry, stack)
.global EnterProgram
EnterProgram:
    mov %rsi, %rsp
    xor %edx, %edx
    xor %ebp, %ebp
    jmp *%rdi

# The program runs at the same privilege, so a call only needs another stack. The 128 bytes below
# the program's stack pointer belong to it.
.global SystemCallEntry
SystemCallEntry:
    mov %rsp, program_stack
    mov $stack_end, %rsp
    push %rcx                           # the return address
    push %r11                           # the flags
    push %r9
    push %r8
    push %r10
    push %rdx
    push %rsi
    push %rdi
    push %rax
    mov %rsp, %rdi
    sub $8, %rsp
    cld
    call DoSystemCall
    add $8, %rsp
    pop %rax
    pop %rdi
    pop %rsi
    pop %rdx
    pop %r10
    pop %r8
    pop %r9
    popf
    pop %rcx
    mov program_stack, %rsp
    jmp *%rcx

.altmacro
.macro entry number
entry_\number:
    mov $\number, %edi
    jmp fault
.endm
.macro reference number
    .quad entry_\number
.endm
.set number, 0
.rept 32
    entry %number
    .set number, number + 1
.endr
fault:
    mov %rsp, %rsi
    mov $stack_end, %rsp
    call DoFault

.section .rodata
.align 8
.global g_exceptionEntries
g_exceptionEntries:
.set number, 0
.rept 32
    reference %number
    .set number, number + 1
.endr

.section .bss
.align 4096
level4: .skip 4096
level3: .skip 4096
.global g_level2
g_level2:
level2: .skip 4096
.skip 65536
stack_end:
program_stack: .skip 8
