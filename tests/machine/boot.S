# What the kernel cannot say in C++: how it starts, and how it is entered from the program.

.set present, 1
.set writable, 2
.set huge, 0x80                 # a page of 2 MB
.set ring0Code, 8
.set ring0Data, 16
.set taskState, 24

# GRUB's header: modules begin with pages, and the memory's size is told.
.section .multiboot, "a"
.align 4
.long 0x1BADB002, 3, -(0x1BADB002 + 3)

.text
.code32
.globl start
start:
  cli
  mov %ebx, multibootInformation
  mov $stackTop, %esp

  # The first 4 GB of memory keep their addresses.
  movl $pointers + (present | writable), pageTable
  mov $directories + (present | writable), %eax
  mov $pointers, %edi
  mov $4, %ecx
1:mov %eax, (%edi)
  add $4096, %eax
  add $8, %edi
  loop 1b
  mov $present | writable | huge, %eax
  mov $directories, %edi
  mov $2048, %ecx
2:mov %eax, (%edi)
  add $0x200000, %eax
  add $8, %edi
  loop 2b

  mov $pageTable, %eax
  mov %eax, %cr3
  mov %cr4, %eax
  or $0x50620, %eax             # PAE, OSFXSR, OSXMMEXCPT, FSGSBASE, OSXSAVE
  mov %eax, %cr4
  mov $0xC0000080, %ecx         # EFER: SCE, LME
  rdmsr
  or $0x101, %eax
  wrmsr
  mov $0x80000033, %eax         # PG, NE, ET, MP, PE
  mov %eax, %cr0
  lgdt descriptorsPointer
  ljmp $ring0Code, $start64

.code64
start64:
  mov $ring0Data, %eax
  mov %eax, %ds
  mov %eax, %es
  mov %eax, %ss
  mov $stackTop, %rsp

  # All vector registers that the processor has: the program finds them switched on by a system.
  mov $0xD, %eax
  xor %ecx, %ecx
  cpuid
  and $0xE7, %eax
  xor %edx, %edx
  xor %ecx, %ecx
  xsetbv

  mov $0xC0000081, %ecx         # STAR: the program stays in ring 0
  xor %eax, %eax
  mov $ring0Code << 16 | ring0Code, %edx
  wrmsr
  mov $0xC0000082, %ecx         # LSTAR
  mov $systemCallEntry, %eax
  xor %edx, %edx
  wrmsr
  mov $0xC0000084, %ecx         # FMASK: TF, IF, DF
  mov $0x700, %eax
  wrmsr

  # Exceptions have a stack of their own, since the program may keep data below its own.
  mov $gates, %rdi
  mov $exceptionEntries, %rsi
  mov $32, %ecx
3:mov (%rsi), %rax
  mov %ax, (%rdi)
  movw $ring0Code, 2(%rdi)
  movw $0x8E01, 4(%rdi)
  shr $16, %rax
  mov %eax, 6(%rdi)
  add $16, %rdi
  add $8, %rsi
  loop 3b
  lidt gatesPointer
  movl $exceptionStackTop, taskStateSegment + 36
  mov $taskStateSegment, %eax
  mov %ax, descriptors + taskState + 2
  shr $16, %eax
  mov %al, descriptors + taskState + 4
  mov %ah, descriptors + taskState + 7
  mov $taskState, %eax
  ltr %ax

  mov multibootInformation, %edi
  call startProgram

# void enterProgram(uint64_t entry, uint64_t stack)
.globl enterProgram
enterProgram:
  mov %rsi, %rsp
  xor %edx, %edx
  xor %ebp, %ebp
  jmp *%rdi

systemCallEntry:
  mov %rsp, programStack
  mov $stackTop, %rsp
  cmp $56, %eax
  je clone
  cmp $60, %eax
  je exitThread
  push %rcx                     # where to go on
  push %r11                     # flags
  push %r9
  push %r8
  push %r10
  push %rdx
  push %rsi
  push %rdi
  push %rax
  mov %rsp, %rdi
  sub $8, %rsp
  call systemCall
  add $16, %rsp
  pop %rdi
  pop %rsi
  pop %rdx
  pop %r10
  pop %r8
  pop %r9
  popf
  pop %rcx
  mov programStack, %rsp
  jmp *%rcx

# A thread runs when it is made, until it ends, and cannot make another one.
clone:                          # flags, stack, where to store the thread, what to clear, its storage
  cmpq $0, makerStack
  jne 1f
  mov programStack, %rax
  mov %rax, makerStack
  mov %rcx, maker
  mov %rbx, maker + 8
  mov %rbp, maker + 16
  mov %r12, maker + 24
  mov %r13, maker + 32
  mov %r14, maker + 40
  mov %r15, maker + 48
  rdfsbase %rax
  mov %rax, maker + 56
  mov %r10, maker + 64
  movl $2, (%rdx)
  wrfsbase %r8
  mov %rsi, %rsp
  xor %eax, %eax
  jmp *%rcx
1:mov programStack, %rsp
  mov $-11, %rax                # EAGAIN
  jmp *%rcx

exitThread:
  mov makerStack, %rsp
  movq $0, makerStack
  mov maker + 64, %rax
  movl $0, (%rax)
  mov maker + 56, %rax
  wrfsbase %rax
  mov maker, %rcx
  mov maker + 8, %rbx
  mov maker + 16, %rbp
  mov maker + 24, %r12
  mov maker + 32, %r13
  mov maker + 40, %r14
  mov maker + 48, %r15
  mov $2, %eax
  jmp *%rcx

# Of the exceptions 8, 10 to 14, 17, 21 and 30 the processor stores a code, of the others the entry.
.irp number, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, \
  26, 27, 28, 29, 30, 31
exception\number:
  .if !(0x40227D00 >> \number & 1)
    push $0
  .endif
  push $\number
  jmp exceptionEntry
.endr
exceptionEntry:
  push %rax
  push %rcx
  push %rdx
  push %rsi
  push %rdi
  push %r8
  push %r9
  push %r10
  push %r11
  lea 72(%rsp), %rdi
  cld
  call exception
  pop %r11
  pop %r10
  pop %r9
  pop %r8
  pop %rdi
  pop %rsi
  pop %rdx
  pop %rcx
  pop %rax
  add $16, %rsp
  iretq

.data
.align 8
exceptionEntries:
.irp number, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, \
  26, 27, 28, 29, 30, 31
  .quad exception\number
.endr
descriptors:
  .quad 0, 0x00AF9A000000FFFF, 0x00CF92000000FFFF, 0x0000890000000067, 0
descriptorsPointer:
  .word descriptorsPointer - descriptors - 1
  .quad descriptors
gatesPointer:
  .word 32 * 16 - 1
  .quad gates

.bss
.align 4096
.globl pageTable
pageTable: .skip 4096
pointers: .skip 4096
directories: .skip 4 * 4096
gates: .skip 32 * 16
taskStateSegment: .skip 104
multibootInformation: .skip 8
programStack: .skip 8
makerStack: .skip 8
maker: .skip 72
.align 16
.skip 65536
stackTop:
.skip 16384
exceptionStackTop:
