#include "Model/Diagnosis/LinuxNotes.h"

namespace vantoro {

namespace {

constexpr const char* endsWithTheUpdate = "It finishes on its own; interrupting it can leave packages half installed.";
constexpr const char* endsWithTheBuild =
    "It ends with the build. Fewer jobs at once (“-j 2”) leave room for other work, and take longer.";
constexpr const char* endsWithTheJob = "It ends when its job is done.";
constexpr const char* lookBehind = "It works for other programs: the one that keeps it busy is the cause.";
constexpr const char* closesTheSession = "Quitting it closes every window: look for the program that keeps it busy.";

} // namespace

std::span<const LinuxNote> linuxProgramNotes() {
    using enum LinuxNote::Nature;
    static constexpr LinuxNote notes[] = {
        // Looking through files.
        {"tracker-miner-fs* tracker-miner-f* localsearch* tracker-store tracker-extract* tracker-writeback*",
         "File indexing", "the desktop reading your files so that they can be searched for.",
         "It finishes on its own, after large changes in an hour or so. Search settings choose the folders.", task},
        {"baloo_file baloo_file_extractor baloorunner", "File indexing (Baloo)",
         "the desktop reading your files so that they can be searched for.",
         "It finishes on its own. “balooctl suspend” pauses it; the search settings choose the folders.", task},
        {"updatedb* plocate-build", "File list update", "the daily update of the list that “locate” searches.",
         "It finishes in minutes.", task},
        {"mandb man-db", "Manual index", "the system updating the index of its manual pages.",
         "It finishes in minutes.", task},
        {"fc-cache gtk-update-icon-cache gtk-update-icon update-desktop-da update-desktop-database "
         "update-mime-database "
         "glib-compile-schemas appstreamcli ldconfig depmod locale-gen localedef texhash",
         "Catalogue update", "the system updating a catalogue after software was installed.",
         "It finishes in a minute or two.", task},
        {"zeitgeist* kactivitymanage*", "Activity log", "the desktop noting which files and programs were used.",
         "It should be brief. If it stays busy, its database is usually damaged; the privacy settings turn it off.",
         problem},
        {"tumblerd gnome-desktop-thumbnailer totem-video-thumbnailer ffmpegthumbnailer kioworker kioslave5 "
         "thumbnail.so",
         "Thumbnails", "the file manager making small pictures of files or reading folders.",
         "It ends when the folder is done; closing the folder's window ends it sooner.", task},
        {"gvfsd-metadata", "File notes (gvfsd-metadata)",
         "a helper that remembers window places and emblems of files. It is known to get stuck.",
         "Ending it is safe: it starts again by itself.", problem},
        {"gvfsd* gvfs-*", "File access (gvfs)", "the desktop reaching network folders, phones and drives.",
         "Look for a transfer, or a phone or network folder that does not answer.", part},
        // Software and updates.
        {"packagekitd packagekit-dire gnome-software plasma-discover DiscoverNotifier update-manager mintUpdate "
         "mintupdate pamac-daemon pamac-manager update-notifier apt-check check-new-release appcenter aptd "
         "pk-command-not",
         "Software updates", "the system looking for, downloading or installing updates.", endsWithTheUpdate, task},
        {"unattended-upgrade unattended-upgr unattended-upgrades apt.systemd.daily dnf-automatic", "Automatic updates",
         "the system installing security updates by itself.", endsWithTheUpdate, task},
        {"apt apt-get aptitude dpkg dpkg-deb dpkg-preconfigu dpkg-preconfigure apt-listchanges needrestart debconf "
         "dpkg-query nala",
         "Package installation", "the installation of software packages.", endsWithTheUpdate, errand},
        {"dnf dnf5 dnf5daemon-server yum rpm zypper zypper-* rpm-ostree rpm-ostreed microdnf transactional-update",
         "Package installation", "the installation of software packages.", endsWithTheUpdate, errand},
        {"pacman apk emerge ebuild xbps-install eopkg yay paru nix nix-daemon nix-build nix-env guix guix-daemon bootc",
         "Package installation", "the installation or building of software packages.", endsWithTheUpdate, errand},
        {"snapd snap-store snap snap-seccomp snap-update-ns", "Snap packages",
         "the service that installs and updates snaps.", "It finishes on its own. “snap changes” shows what it does.",
         task},
        {"flatpak flatpak-system-helper flatpak-session-helper flatpak-portal", "Flatpak",
         "the installation or update of Flatpak applications.", endsWithTheUpdate, task},
        {"fwupd fwupdmgr fwupdtool", "Firmware updates", "the service that looks for and installs firmware updates.",
         "Let it finish: firmware that is half written may keep a device from starting.", task},
        {"dracut mkinitramfs update-initramfs mkinitcpio dkms kernel-install grub-mkconfig update-grub",
         "Kernel preparation", "the system preparing a new kernel or its drivers for the next start.",
         "Let it finish: without it the next start may fail.", errand},
        // The desktop.
        {"gnome-shell mutter", "GNOME Shell",
         "the part of the desktop that draws every window. High use usually means an external display, an extension, "
         "or "
         "a program that redraws all the time.",
         "Look for animation or video, and turn extensions off to confirm. Quitting it may end your session.", part},
        {"kwin_wayland kwin_x11 kwin_wayland_wrapper", "Window manager (KWin)",
         "the part of the desktop that draws every window.",
         "Look for animation or video, or desktop effects. Quitting it may end your session.", part},
        {"plasmashell", "Plasma desktop", "the panels, the wallpaper and the widgets of the desktop.",
         "A widget or an animated wallpaper is the usual cause. “plasmashell --replace” starts it afresh.", part},
        {"Xorg X Xorg.bin", "Display server (Xorg)", "the program that puts every window on the screen.",
         closesTheSession, part},
        {"Xwayland", "Xwayland", "the program that shows older applications on a modern desktop.",
         "Look for an older application or a game that redraws. Quitting it closes all of those.", part},
        {"cinnamon muffin xfwm4 xfce4-panel xfdesktop xfce4-session marco mate-panel budgie-wm budgie-panel gala sway "
         "Hyprland weston labwc wayfire river niri cosmic-comp cosmic-panel i3 openbox lxqt-panel lxqt-session picom "
         "compton enlightenment awesome bspwm dwm gamescope gamescope-wl",
         nullptr, "a part of the desktop: it draws the windows, panels or effects.", closesTheSession, part},
        {"gnome-session* gsd-* gdm* sddm* lightdm* ksmserver kded* ksystemstats krunner startplasma* xfsettingsd "
         "csd-* mate-settings* plasma_session lxdm",
         nullptr, "a part of the desktop or of its login screen.",
         "It should be nearly idle. Logging out and in again usually settles it.", part},
        {"xdg-desktop-portal* xdg-document-portal xdg-permission-store at-spi* ibus-* fcitx5 fcitx dconf-service "
         "gnome-keyring-d gnome-keyring-daemon goa-daemon goa-identity-service ssh-agent gpg-agent",
         nullptr, "a helper of the desktop that works for applications.", lookBehind, part},
        {"evolution-* akonadi* kmail maildir*", "Mail and calendar",
         "the service that fetches and keeps mail, calendars and contacts.",
         "It settles when all mail is fetched. If it does not, an account that cannot be reached is the usual cause.",
         task},
        {"pipewire pipewire-pulse wireplumber pulseaudio jackd pipewire-media-session", "Sound",
         "the sound server. It shows up whenever something is playing or recording.",
         "Look for what plays, records or is in a call; effects and noise removal cost most.", part},
        {"gnome-remote-desktop-daemon gnome-remote-de xrdp Xvnc x11vnc krfb wayvnc sunshine rustdesk anydesk "
         "teamviewerd",
         "Remote desktop", "the service that shows this screen on another machine.",
         "It ends when the other side disconnects.", part},
        {"gnome-system-monitor plasma-systemmonitor htop top btop atop glances nvtop radeontop conky vantoro-top",
         nullptr, "a program that watches this machine.", "Longer intervals or closing it make it cost less.", app},
        // The system's services.
        {"systemd init", "Service manager (systemd)", "the program that starts and watches everything else.",
         "It must run. A service that fails and is started again and again keeps it busy: “systemctl --failed” names "
         "it.",
         part},
        {"systemd-journald journalctl rsyslogd syslog-ng in:imjournal klogd", "System log",
         "the service that keeps the system's log.",
         "Some program writes to the log without end: “journalctl -f” shows which.", part},
        {"systemd-udevd udevd (udev-worker) udev-worker", "Device manager (udev)",
         "the service that sets up devices as they come and go.",
         "A device that comes and goes keeps it busy: unplug docks and hubs one at a time.", part},
        {"systemd-coredum systemd-coredump apport abrtd abrt-* drkonqi whoopsie coredumpctl", "Crash report",
         "the system saving what a program left behind that has crashed.",
         "It finishes on its own. If it keeps coming back, some program crashes over and over.", task},
        {"systemd-oomd earlyoom nohang", "Memory watch",
         "the service that ends programs before memory runs out altogether.",
         "Memory is short: close what holds the most of it.", part},
        {"systemd-resolved systemd-resolve dnsmasq unbound named avahi-daemon nscd sssd sssd_*", "Name service",
         "the service that looks up the names of machines and users.", lookBehind, part},
        {"systemd-timesyn systemd-timesyncd chronyd ntpd", "Clock", "the service that keeps the clock right.",
         "It should be idle; restarting the service is safe.", part},
        {"systemd-*", nullptr, "one of the system's own services.",
         "It should be nearly idle. “systemctl status” and “journalctl -u” with its name tell what it does.", part},
        {"dbus-daemon dbus-broker dbus-broker-launch dbus-broker-lau", "Message bus (D-Bus)",
         "the way in which programs talk to each other.", lookBehind, part},
        {"polkitd accounts-daemon rtkit-daemon udisksd upowerd colord geoclue boltd switcheroo-contr "
         "switcheroo-control iio-sensor-proxy low-memory-monitor usbmuxd pcscd fprintd irqbalance acpid",
         nullptr, "a small service that works for other programs.", lookBehind, part},
        {"NetworkManager wpa_supplicant iwd ModemManager connmand dhclient dhcpcd systemd-networkd nm-*", "Network",
         "the service that keeps the network connected.",
         "A connection that comes and goes keeps it busy: turning Wi-Fi off and on usually settles it.", part},
        {"bluetoothd obexd", "Bluetooth", "the service that talks to Bluetooth devices.",
         "Turning Bluetooth off and on usually settles it.", part},
        {"cupsd cups-browsed gs pdftops rastertopwg ipp-usb foomatic-rip", "Printing",
         "the service that prepares and sends pages to the printer.",
         "It ends with the print job; delete one that is stuck.", task},
        {"thermald power-profiles-daemon power-profiles- tuned tlp auto-cpufreq fancontrol thinkfan nbfc_service asusd",
         nullptr, "the service that looks after heat, fans or power.",
         "It should be nearly idle, and the machine's cooling may depend on it: leave it running.", part},
        {"sshd sshd-session sftp-server dropbear", "Remote login",
         "the service through which others log in or copy files.",
         "Look at who is logged in (“who”); many refused attempts mean that somebody is guessing passwords.", part},
        {"cron crond anacron atd run-parts logrotate savelog", "Scheduled jobs",
         "the service that runs jobs at set times.", endsWithTheJob, task},
        {"fstrim", "Drive tidying (fstrim)", "the weekly tidying of solid-state drives.", "It finishes in minutes.",
         task},
        {"fsck fsck.* e2fsck e2scrub* xfs_repair xfs_scrub* btrfs btrfsck btrfs-scrub zpool mdadm mdcheck smartd "
         "smartctl",
         "Drive check", "a check or a rearrangement of drives and file systems.",
         "It finishes on its own; do not turn the machine off meanwhile.", errand},
        {"gnome-initial-s cloud-init waagent google_osconfig_agent amazon-ssm-agen amazon-ssm-agent snap-confine",
         nullptr, "a service that sets this machine up.", endsWithTheJob, task},
        // Protection.
        {"clamd clamscan clamdscan freshclam clamonacc rkhunter chkrootkit maldet", "Virus scan",
         "the search for malware in files.", "Temporary and worth letting finish; it can be scheduled for the night.",
         task},
        {"wdavdaemon mdatp falcon-sensor falcon-sensor-b wazuh-* ossec-* osqueryd auditbeat elastic-endpoint "
         "sentinelone-* "
         "s1-agent cbagentd xagt ds_agent esets_daemon oaeventd",
         "Security agent",
         "the security software of whoever manages this machine. It looks at every file that others "
         "open.",
         "Whoever manages this machine can leave build and virtual-machine folders out of its scans.", part},
        {"auditd audispd fail2ban-server firewalld usbguard-daemon suricata snort aide lynis", nullptr,
         "a service that guards this machine.", "It follows what happens on the machine and its network.", part},
        {"xmrig xmr-stak kdevtmpfsi kinsing cpuminer minerd ethminer t-rex nbminer", "Cryptocurrency miner",
         "a program that earns money for somebody with this machine's power.",
         "If you did not start it, somebody else uses this machine: end it, and find out how it came here.", problem},
        // Containers and machines.
        {"container~*", nullptr, "a container: all that runs inside counts here.",
         "“docker stats” or “podman stats” shows the containers; what runs inside decides how long this lasts.", app},
        {"dockerd docker containerd containerd-shim* docker-proxy podman conmon crun runc buildkitd buildah crio "
         "kubelet "
         "k3s* kube-* etcd lxd incusd lxcfs nerdctl",
         "Containers", "the service that runs containers.",
         "It follows the containers: “docker stats” or “podman stats” shows which one works.", part},
        {"virtual~machine~* qemu-* qemu kvm VBoxHeadless VirtualBoxVM vmware-vmx cloud-hyperviso cloud-hypervisor "
         "firecracker crosvm",
         nullptr, "a virtual machine: all that runs inside counts here.",
         "Look at what runs inside. Shutting it down from within is safe; quitting it is like pulling its plug.", app},
        {"libvirtd virtqemud virtlogd virtnetworkd VBoxSVC vmware-authd lxc-start waydroid", "Virtual machines",
         "the service that runs virtual machines.", "It follows the machines: look at what runs inside.", part},
        // Games and programs for Windows.
        {"wine wine64 wineserver wine-preloader wine64-preloader services.exe winedevice.exe explorer.exe plugplay.exe "
         "rpcss.exe svchost.exe proton start.exe steam.exe",
         "Windows programs (Wine)", "what lets programs for Windows run here.",
         "The game or program that runs through it is the cause.", app},
        {"steam steamwebhelper steam-runtime-* pressure-vessel* pv-bwrap srt-bwrap reaper lutris heroic bottles "
         "gamemoded",
         "Game launcher", "a program that fetches and starts games.",
         "Downloads can be paused and animated pages closed; a small mode shows fewer of them.", app},
        {"fossilize_replay fossilize-replay", "Shader preparation",
         "Steam preparing a game's graphics before it is played.",
         "It ends by itself, and it pauses while a game runs. Steam's settings can turn it off.", work},
        // Browsers and what they are made of.
        {"firefox firefox-bin firefox-esr librewolf Web~Content Isolated~Web~Co WebExtensions Privileged~Cont "
         "RDD~Process Utility~Process Socket~Process",
         "Firefox", "the browser: the pages, videos and extensions that are open.",
         "“about:processes” shows which page costs most; closing its tab is usually enough.", app},
        {"chrome chromium chromium-browse chromium-browser brave msedge vivaldi-bin opera", "Browser",
         "the browser: the pages, videos and extensions that are open.",
         "Its own task manager (Shift+Esc) shows which page costs most; closing its tab is usually enough.", app},
        {"WebKitWebProces WebKitWebProcess WebKitNetworkP WebKitNetworkProcess QtWebEngineProc QtWebEngineProcess "
         "epiphany "
         "falkon electron",
         "Web page", "a web page, on its own or inside an application.",
         "Closing the page or the application that shows it is usually enough.", app},
        // Building software.
        {"cc1 cc1plus cc1obj gcc gcc-* g++ g++-* c++ cc clang clang-* clang++ clang++-* f951 gfortran* gnat1 collect2 "
         "lto1* lto-wrapper nvcc cicc ptxas x86_64-linux-gnu-* aarch64-linux-gnu-* x86_64-redhat-* icpx dmd ldc2 zig",
         "Compiler", "a compiler: it turns a program's text into the program.", endsWithTheBuild, work},
        {"rustc rustdoc ghc* compile asm swift-frontend swiftc javac kotlinc scalac dotnet MSBuild.dll csc.dll "
         "VBCSCompiler.dll "
         "ocamlopt* ocamlfind nim erlc",
         "Compiler", "a compiler: it turns a program's text into the program.", endsWithTheBuild, work},
        {"x86_64-linux-gnu-ld* aarch64-linux-gnu-ld* as ld ld.bfd ld.gold ld.lld lld ld64.lld mold ld.mold link "
         "rust-lld ar ranlib strip objcopy dwz dsymutil "
         "dwp",
         "Linker", "the last step of a build: it puts the pieces of a program together.", endsWithTheBuild, work},
        {"make gmake ninja samu cmake ctest meson bazel scons cargo go mvn gradle rake waf dpkg-buildpackage rpmbuild "
         "makepkg bitbake",
         nullptr, "a build: it runs the compilers and the tests of a program.", endsWithTheBuild, work},
        {"meson.py bazel-real org.codehaus.plexus.classworlds.launcher.Launcher GradleDaemon GradleWrapperMain "
         "GradleWorkerMain GradleMain sbt-launch.jar buildctl ccache sccache distccd icecc iceccd",
         "Build", "a build: it runs the compilers and the tests of a program.", endsWithTheBuild, work},
        {"npm npm-cli.js yarn yarn.js pnpm pnpm.cjs npx tsc tsc.js webpack webpack.js vite vite.js esbuild rollup next "
         "next-server jest jest.js turbo swc babel pip pip3 pipx uv poetry conda mamba composer bundle",
         nullptr, "the installation or building of a web or script project.", endsWithTheBuild, work},
        {"clangd rust-analyzer gopls pylsp pyright* tsserver.js tsserver typescript-language-server jdtls ccls "
         "omnisharp cpptools cpptools-srv lua-language-se lua-language-server zls eslint* ruff",
         "Code analysis", "an editor's helper that reads a whole project to find names and faults.",
         "It settles when it has read the project. Closing the editor's window ends it.", work},
        {"pytest py.test ipykernel_launcher jupyter-lab jupyter-noteboo jupyter-notebook jupyter R julia octave* "
         "MATLAB "
         "torchrun",
         nullptr, "a computation or a notebook at work.",
         "It ends when its cells or tests are done; an open notebook can be interrupted from its own window.", work},
        {"gdb lldb valgrind memcheck-* callgrind-* perf strace ltrace heaptrack bpftrace afl-fuzz", nullptr,
         "a tool that watches another program run.", endsWithTheJob, work},
        {"git git-* git-remote-http hg svn", "Version control",
         "the work on a repository: fetching, comparing or tidying it.", endsWithTheJob, work},
        // Backups, copies, archives.
        {"borg borgmatic restic duplicity deja-dup* rsnapshot kopia backintime* btrbk bacula-* urbackupclientb veeam* "
         "rdiff-backup",
         "Backup", "a backup running right now.",
         "It will stop when the backup completes; an interrupted one usually starts over.", work},
        {"timeshift snapper snapperd snapper-* grub-btrfsd", "System snapshots",
         "the system keeping a picture of itself.", "It finishes on its own.", task},
        {"rsync scp cp mv dd rclone sftp find du tar cpio sha256sum sha512sum md5sum b2sum shred rm", nullptr,
         "the copying, searching or checking of files.", endsWithTheJob, work},
        {"gzip pigz xz zstd bzip2 pbzip2 lbzip2 7z 7zz 7za zip unzip unrar unsquashfs mksquashfs lz4 brotli "
         "file-roller ark",
         "Archive", "the packing or unpacking of an archive.", endsWithTheJob, work},
        {"syncthing dropbox nextcloud onedrive insync megasync seaf-daemon owncloud maestral", "File sync",
         "the service that keeps files the same here and elsewhere.",
         "It settles once all is in sync; it can be paused.", app},
        {"transmission* qbittorrent* deluged aria2c wget curl yt-dlp steamcmd", nullptr, "a download.", endsWithTheJob,
         work},
        // Media, models, servers.
        {"ffmpeg HandBrakeCLI ghb melt x264 x265 SvtAv1EncApp handbrake kdenlive_render blender gst-launch-1.0 "
         "mencoder Plex~Transcoder sox lame darktable-cli",
         nullptr, "the encoding or rendering of pictures, sound or video.",
         "It ends when the file is done; the graphics processor often does the same with less work.", work},
        {"ollama ollama_llama_server ollama_llama_se llama-server llama-cli whisper-cli vllm stable-diffusion* comfyui",
         "Language model", "a language or picture model computing an answer.",
         "It ends with the answer; a smaller model takes less.", app},
        {"boinc boinc_client FahCore* FAHClient fah-client", "Volunteer computing",
         "science done with the power that is left over.", "It can be paused, or told to use fewer processors.", app},
        {"postgres postmaster mysqld mariadbd mongod redis-server valkey-server elasticsearch influxd clickhouse-serv "
         "clickhouse-server beam.smp",
         "Database", "a database at work.",
         "It works for other programs: a slow query of one of them is the usual cause.", part},
        {"nginx apache2 httpd caddy haproxy traefik php-fpm* uwsgi gunicorn uvicorn puma unicorn http.server envoy "
         "lighttpd",
         "Web server", "a web server answering requests.", "It follows its visitors: its log shows who asks for what.",
         part},
        {"jellyfin Plex~Media~Server plexmediaserver emby* minidlnad immich* motion frigate", "Media server",
         "a service that plays, converts or sorts pictures and videos.",
         "It ends when nobody plays and the library is read.", part},
        {"stress stress-ng sysbench yes openssl hashcat john prime95 mprime glmark2 geekbench* 7zr", nullptr,
         "a program that is meant to keep the machine busy.", "Stop it when you have seen enough.", work},
    };
    return notes;
}

} // namespace vantoro
