#include "Model/Diagnosis/LinuxNotes.h"

namespace vantoro {

std::span<const LinuxNote> linuxKernelNotes() {
    using enum LinuxNote::Nature;
    static constexpr const char* followsItsUsers =
        "It follows what reads and writes: find the copy, backup, download or build behind it. It ends with that.";
    static constexpr const char* driverAtFault = "If it stays busy, a driver is usually at fault: “dmesg” often names "
                                                 "it, and a restart or a newer kernel helps.";
    static constexpr LinuxNote notes[] = {
        // Memory.
        {"kswapd* kworker/zswap* kworker/mm_percpu_wq*", "Memory reclaim (kswapd)",
         "the kernel making room in memory, over and over: programs want more than there is. It is a symptom of full "
         "memory, not its cause.",
         "Close what holds the most memory; this settles as soon as there is room again.", part},
        {"kcompactd*", "Memory compaction (kcompactd)",
         "the kernel moving memory together to make large free pieces, mostly because memory is nearly full.",
         "Close what holds the most memory; this settles as soon as there is room again.", part},
        {"khugepaged", "Large memory pages (khugepaged)",
         "the kernel joining small pages of memory into large ones for a program that uses a lot of it.",
         "It ends when it has caught up.", task},
        {"ksmd", "Memory merging (ksmd)",
         "the kernel looking for equal pages of memory to keep only once, mostly for "
         "virtual machines.",
         "It trades processor time for memory. Where memory is plentiful, page merging (KSM) can be turned off.", part},
        {"oom_reaper", "Out-of-memory cleanup", "the kernel taking back the memory of a program that it had to end.",
         "Memory ran out: close something large before the next program is ended.", task},
        // Cooling.
        {"idle_inject* kidle_inj*", "Cooling pauses",
         "not a culprit. The system makes its processors pause so that they cool down, and this is those pauses.",
         "Look at what was running just before — that is what made the heat.", part},
        // Interrupts and network.
        {"ksoftirqd*", "Interrupt work (ksoftirqd)",
         "the kernel working off interrupts, mostly of the network, that come faster than they can be handled at once.",
         "Look for heavy network traffic: the program behind it is the cause.", part},
        {"irq/*", nullptr, "the kernel answering the interrupts of the device it is named for.",
         "That device is busy, or its driver or firmware misbehaves: “cat /proc/interrupts” shows how often it calls.",
         part},
        {"irq/nvme* irq/ahci* irq/mmc*", nullptr, "the kernel answering a drive's interrupts.", followsItsUsers, part},
        {"irq/iwlwifi* irq/ath* irq/mt7* irq/rtw* irq/rtl* irq/brcm* kworker/phy* kworker/iwlwifi* kworker/ath* "
         "kworker/rtw* kworker/mt7* kworker/cfg80211* mt76-*",
         "Wi-Fi driver", "the driver of the Wi-Fi card.",
         "Look for a large transfer. If there is none, turning Wi-Fi off and on usually settles it.", part},
        {"irq/acpi kworker/kacpi* kworker/kec_query*", "Firmware events (ACPI)",
         "the kernel answering the firmware. A device or a key that sends events without end can keep it busy for "
         "good.",
         "Unplugging docks and adapters or updating the firmware usually ends it; “grep . "
         "/sys/firmware/acpi/interrupts/gpe*” shows which event it is.",
         problem},
        {"napi/* kworker/netns* kworker/inet* kworker/ipv6* kworker/mlx* kworker/ixgbe* kworker/e1000* kworker/wg-*",
         "Network work", "the kernel handling network packets; “wg-crypt” is the encryption of a WireGuard tunnel.",
         "Look for heavy network traffic: the program behind it is the cause.", part},
        // Graphics.
        {"kworker/i915* kworker/xe* kworker/amdgpu* kworker/ttm* kworker/gfx* kworker/comp_* kworker/sdma* "
         "kworker/drm* kworker/nouveau* kworker/panfrost* kworker/v3d* card* gfx* sdma* comp_* irq/i915* irq/amdgpu* "
         "irq/nvidia* nvidia* nv_queue UVM*",
         "Graphics driver", "the graphics driver doing what windows, games and videos ask of it.",
         "Look for what is drawing: a game, a video, an animated page, an external display.", part},
        // Storage.
        {"kworker/btrfs* btrfs*", "Btrfs", "the Btrfs file system checksumming, compressing or tidying up.",
         "It follows a copy, a backup, a deleted snapshot, a balance or a scrub, and ends with it.", part},
        {"kworker/kcryptd* dmcrypt_write* kcryptd* kworker/kverityd*", "Disk encryption",
         "the kernel encrypting and decrypting what is read from and written to the disk.", followsItsUsers, part},
        {"kworker/flush* kworker/writeback* kworker/ext4* jbd2/* kworker/xfs* xfsaild/* kworker/f2fs* f2fs_*",
         "Writing to disk", "the kernel writing changed files to the disk.", followsItsUsers, part},
        {"z_* txg_* arc_* dbu_* dp_* zvol* spl_* l2arc_*", "ZFS", "the ZFS file system at work.",
         "It follows what reads and writes, or a scrub: “zpool status” tells.", part},
        {"md_resync md_reshape md_recover* md_raid* md_cluster*", "RAID",
         "the kernel keeping the disks of an array alike; now and then it checks all of them.",
         "A check or a rebuild takes hours and ends by itself: “cat /proc/mdstat” tells how far it is.", task},
        {"kworker/nvme* kworker/kblockd* kworker/scsi* kworker/ata* kworker/dio* kworker/dm-* kworker/md* scsi_* "
         "usb-storage "
         "mmcqd* kworker/mmc* kworker/bcache* bcache*",
         "Storage", "the kernel moving data to and from the drives.", followsItsUsers, part},
        {"loop* kworker/loop*", "Disk image",
         "the kernel reading a file as if it were a disk, such as a snap or an image.", followsItsUsers, part},
        {"kworker/rpciod* kworker/xprtiod* kworker/nfs* nfsd lockd kworker/cifs* cifsd kworker/smb* ksmbd*",
         "Network folder", "the kernel reading or serving files over the network.", followsItsUsers, part},
        // Devices.
        {"kworker/usb* kworker/hub* kworker/xhci* irq/xhci*", "USB", "the kernel talking to USB devices.",
         "A device that comes and goes keeps it busy: unplug hubs, docks and devices one at a time.", part},
        {"kworker/hci* krfcommd", "Bluetooth driver", "the kernel talking to Bluetooth devices.",
         "Turning Bluetooth off and on usually settles it.", part},
        {"kworker/thunderbolt* kworker/pciehp* irq/pciehp* irq/thunderbolt* kworker/pm kworker/ucsi* kworker/typec*",
         "Docks and ports", "the kernel looking after docks, ports and sleeping devices.",
         "A dock or adapter that comes and goes keeps it busy: unplug it and plug it in again.", part},
        // The kernel's own housekeeping.
        {"kworker*", "Kernel worker", "a worker of the kernel's, doing what drivers and file systems leave for later.",
         driverAtFault, part},
        {"rcu* migration cpuhp watchdog* kthreadd stopper khungtaskd backlog_napi posixcputmr ktimers",
         "Kernel housekeeping", "the kernel's own housekeeping.", driverAtFault, part},
        {"kauditd", "Audit log", "the kernel handing events to the audit log.",
         "Too many audit rules, or a program that breaks one all the time: “aureport” tells.", part},
        {"vhost-* kvm-*", "Virtual machine", "the kernel's part of a virtual machine.",
         "It follows the machine: look at what runs inside.", part},
    };
    return notes;
}

} // namespace vantoro
